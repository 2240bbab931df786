// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "Arp/Device/Interface/Services/IDeviceControlService.hpp"
#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "Arp/System/Core/Exception.hpp"
#include "Arp/System/Rsc/ServiceManager.hpp"
#include "Caught.h"
#include "DeviceRestartClient.h"
#include "RuntimeTest.h"
#include "vplc/Fault.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"

namespace {

using Arp::Device::Interface::Services::IDeviceControlService;
using Arp::System::Commons::ArgumentException;
using Arp::System::Commons::InvalidCastException;
using Arp::System::Commons::InvalidOperationException;
using Arp::System::Rsc::ServiceManager;
using vplc::Runtime;

constexpr const char* kServiceName = "Arp.Device.Interface.Services.IDeviceControlService";

class TypedServiceLookup : public RuntimeTest {};

// A factory for whatever provider and service a test names.
class NamedFactory : public Arp::System::Rsc::Services::IRscServiceProxyFactory {
public:
    NamedFactory(const char* providerName, std::string serviceName)
        : providerName_(providerName), serviceName_(std::move(serviceName)) {}
    const char* GetServiceProviderName() const override { return providerName_; }
    Arp::String GetServiceName() const override { return serviceName_; }

private:
    const char* providerName_;
    std::string serviceName_;
};

// Makes the lookup fail this way, then restarts: the message of the exception of type E that the
// restart throws, or nothing if it throws none.
template <class E>
std::optional<std::string> restartFailureWith(Runtime::Lookup lookup) {
    Runtime::setServiceLookup(lookup);
    const auto e = caught<E>(restartclient::restartDevice);
    if (!e.has_value()) {
        return std::nullopt;
    }
    return std::string(e->GetMessage());
}

TEST_F(TypedServiceLookup, FindsTheDeviceControlServiceOfTheProviderArp) {
    auto service = restartclient::lookUpDeviceControl();

    ASSERT_NE(service, nullptr);
    EXPECT_EQ(Runtime::liveServices(), 1);
    EXPECT_EQ(vplc::calls(Runtime::kGetService), 1);
}

TEST_F(TypedServiceLookup, AnEmptyProviderNameThrowsAnArgumentExceptionAboutTService) {
    Runtime::setServiceLookup(Runtime::Lookup::EmptyProviderName);

    auto e = caught<ArgumentException>(restartclient::restartDevice);

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->GetMessage(), "Service does not specify a service provider");
    EXPECT_EQ(e->GetArgumentName(), "TService");
    EXPECT_EQ(e->GetArgumentValue(), kServiceName);
    EXPECT_EQ(vplc::calls(Runtime::kGetService), 0);
    EXPECT_EQ(Runtime::servicesMade(), 0);
}

TEST_F(TypedServiceLookup, ANullProviderNameThrowsTheStandardLibrarysLogicError) {
    Runtime::setServiceLookup(Runtime::Lookup::NullProviderName);

    EXPECT_THROW(restartclient::restartDevice(), std::logic_error);
    EXPECT_EQ(vplc::calls(Runtime::kGetService), 0);
    EXPECT_EQ(Runtime::servicesMade(), 0);
}

TEST_F(TypedServiceLookup, NoServiceThrowsAnInvalidOperationExceptionNamingInterfaceAndProvider) {
    EXPECT_EQ(restartFailureWith<InvalidOperationException>(Runtime::Lookup::NoService),
              "Could not retrieve service "
              "'Arp::Device::Interface::Services::IDeviceControlService' from service provider "
              "'Arp'.");
    EXPECT_EQ(vplc::calls(Runtime::kGetService), 1);
    EXPECT_EQ(Runtime::servicesMade(), 0);
}

TEST_F(TypedServiceLookup, AServiceOfTheWrongTypeThrowsAnInvalidCastExceptionAndIsDeleted) {
    EXPECT_EQ(restartFailureWith<InvalidCastException>(Runtime::Lookup::WrongType),
              "The service does not implement service interface "
              "'Arp.Device.Interface.Services.IDeviceControlService'.");
    EXPECT_EQ(Runtime::servicesMade(), 1);
    EXPECT_EQ(Runtime::liveServices(), 0);
}

TEST_F(TypedServiceLookup, EveryFailureExceptTheNullProviderNameIsAnArpException) {
    for (Runtime::Lookup lookup : {Runtime::Lookup::EmptyProviderName, Runtime::Lookup::NoService,
                                   Runtime::Lookup::WrongType}) {
        Runtime::setServiceLookup(lookup);

        EXPECT_TRUE(caught<Arp::Exception>(restartclient::restartDevice).has_value());
    }
}

TEST_F(TypedServiceLookup, AFaultInTheLookupPassesOutAsAnArpExceptionWithTheFaultText) {
    vplc::inject(Runtime::kGetService, vplc::Fault::next("RSC connection lost"));

    auto e = caught<Arp::Exception>(restartclient::restartDevice);

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->GetMessage(), "RSC connection lost");
    EXPECT_EQ(Runtime::servicesMade(), 0);
}

TEST_F(TypedServiceLookup, AnotherProviderThanArpHasNoServiceAndIsNamedInTheException) {
    NamedFactory factory("Acme", kServiceName);

    auto e = caught<InvalidOperationException>(
        [&] { ServiceManager::GetService<IDeviceControlService>(factory); });

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->GetMessage(),
              "Could not retrieve service "
              "'Arp::Device::Interface::Services::IDeviceControlService' from service provider "
              "'Acme'.");
}

TEST_F(TypedServiceLookup, TheProviderArpOffersNoServiceUnderAnotherName) {
    NamedFactory factory("Arp", "Arp.Device.Interface.Services.ISomethingElse");

    EXPECT_EQ(ServiceManager::GetService("Arp", factory), nullptr);
    EXPECT_EQ(Runtime::servicesMade(), 0);
}

TEST_F(TypedServiceLookup, ResetBringsBackTheNormalLookup) {
    Runtime::setServiceLookup(Runtime::Lookup::NoService);

    Runtime::reset();

    EXPECT_NE(restartclient::lookUpDeviceControl(), nullptr);
}

}  // namespace
