// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <thread>

#include "Arp/Device/Interface/Services/DeviceControlServiceProxyFactory.hpp"
#include "Arp/System/Core/Exception.hpp"
#include "Caught.h"
#include "DeviceRestartClient.h"
#include "RuntimeTest.h"
#include "vplc/Fault.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"

namespace {

using Arp::Device::Interface::Services::DeviceControlServiceProxyFactory;
using vplc::Runtime;

class DeviceControlService : public RuntimeTest {};

TEST_F(DeviceControlService, ARestartIsCountedAndTheServiceGoesWithItsLastPointer) {
    auto service = restartclient::lookUpDeviceControl();
    ASSERT_NE(service, nullptr);

    service->RestartDevice();

    EXPECT_EQ(Runtime::restarts(), 1);
    EXPECT_EQ(Runtime::liveServices(), 1);
    service.reset();
    EXPECT_EQ(Runtime::liveServices(), 0);
}

TEST_F(DeviceControlService, TwoRestartsThroughTheDriversStatementsUseTwoServiceObjects) {
    restartclient::restartDevice();
    restartclient::restartDevice();

    EXPECT_EQ(Runtime::restarts(), 2);
    EXPECT_EQ(Runtime::servicesMade(), 2);
    EXPECT_EQ(Runtime::liveServices(), 0);
    EXPECT_EQ(vplc::calls(Runtime::kRestartDevice), 2);
}

TEST_F(DeviceControlService, EveryLookupMakesANewServiceObject) {
    auto first = restartclient::lookUpDeviceControl();
    auto second = restartclient::lookUpDeviceControl();

    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(Runtime::servicesMade(), 2);
    EXPECT_EQ(Runtime::liveServices(), 2);
}

TEST_F(DeviceControlService, ARestartThatThrowsRestartsNothingAndStillReleasesTheService) {
    vplc::inject(Runtime::kRestartDevice, vplc::Fault::next("Device is busy"));

    auto e = caught<Arp::Exception>(restartclient::restartDevice);

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->GetMessage(), "Device is busy");
    EXPECT_EQ(vplc::calls(Runtime::kRestartDevice), 1);
    EXPECT_EQ(Runtime::restarts(), 0);
    EXPECT_EQ(Runtime::servicesMade(), 1);
    EXPECT_EQ(Runtime::liveServices(), 0);
}

TEST_F(DeviceControlService, TheObserverSeesTheRestartCountedOnTheRestartingThread) {
    int restartsSeen = -1;
    std::thread::id observerThread;
    Runtime::setRestartObserver([&] {
        restartsSeen = Runtime::restarts();
        observerThread = std::this_thread::get_id();
    });

    restartclient::restartDevice();

    EXPECT_EQ(restartsSeen, 1);
    EXPECT_EQ(observerThread, std::this_thread::get_id());
}

TEST_F(DeviceControlService, AFailedRestartDoesNotCallTheObserver) {
    bool observed = false;
    Runtime::setRestartObserver([&] { observed = true; });
    vplc::inject(Runtime::kRestartDevice, vplc::Fault::next("Device is busy"));

    EXPECT_THROW(restartclient::restartDevice(), Arp::Exception);
    EXPECT_FALSE(observed);
}

TEST_F(DeviceControlService, AFactoryResetIsCountedWithoutARestart) {
    auto service = restartclient::lookUpDeviceControl();

    service->ResetToFactoryDefaults();

    EXPECT_EQ(Runtime::factoryResets(), 1);
    EXPECT_EQ(Runtime::restarts(), 0);
}

TEST_F(DeviceControlService, TheFactoryIsOneObjectNamingTheServiceAndTheProviderArp) {
    DeviceControlServiceProxyFactory& factory = DeviceControlServiceProxyFactory::GetInstance();

    EXPECT_EQ(&factory, &DeviceControlServiceProxyFactory::GetInstance());
    EXPECT_STREQ(factory.GetServiceProviderName(), "Arp");
    EXPECT_EQ(factory.GetServiceName(), "Arp.Device.Interface.Services.IDeviceControlService");
}

TEST_F(DeviceControlService, ResetClearsTheCountersButKeepsCountingServicesThatStillLive) {
    auto service = restartclient::lookUpDeviceControl();
    service->RestartDevice();

    Runtime::reset();

    EXPECT_EQ(Runtime::restarts(), 0);
    EXPECT_EQ(Runtime::servicesMade(), 0);
    EXPECT_EQ(Runtime::liveServices(), 1);
    service.reset();
    EXPECT_EQ(Runtime::liveServices(), 0);
}

}  // namespace
