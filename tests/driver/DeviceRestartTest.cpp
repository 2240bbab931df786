// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>

#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "hosting/LoggedLine.h"
#include "orbel/Recorder.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using hosting::DriverRig;
namespace host = hosting::host;
using hosting::DriverConfig;
using hosting::LoggedLine;

namespace {

const LoggedLine kRestartLine{
    4, "CPLCNext: Device restart requested from Runtime, going for reboot now.",
    "CPLCNext: Device restart requested from Runtime, going for reboot now."};

class DeviceRestart : public ::testing::Test {
protected:
    DeviceRestart() {
        rig_.create(DriverConfig::digital().restart(30).digitalOut(20, "0", "0"));
        rig_.initialize();
        recorder_.clear();
        busCopiesAtStart_ = station_.calls("ArpPlcAxio_WriteFromGdsToAxio");
        servicesAtStart_ = vplc::Runtime::servicesMade();
    }
    void restart() { host::deliver(rig_.driver(), 30, {0}); }

    // Restarts: the message of the exception of type E that reaches the host, or nothing if none
    // does.
    template <class E>
    std::optional<std::string> restartFailure() {
        try {
            restart();
        } catch (const E& error) {
            return std::string(error.GetMessage());
        }
        return std::nullopt;
    }

    std::vector<LoggedLine> logs() const { return hosting::loggedLines(recorder_, &rig_.driver()); }

    int busCopies() const {
        return station_.calls("ArpPlcAxio_WriteFromGdsToAxio") - busCopiesAtStart_;
    }

    DriverRig rig_{{vplc::Module::DI8_DO8}};
    orbel::Recorder& recorder_ = rig_.recorder();
    vplc::VirtualClock& clock_ = rig_.clock();
    vplc::Station& station_ = rig_.station();
    int busCopiesAtStart_ = 0;
    int servicesAtStart_ = 0;
};

}  // namespace

TEST_F(DeviceRestart, EachRestartEventLogsTheRequestOnceAndRestartsOnce) {
    restart();

    EXPECT_EQ(logs(), std::vector<LoggedLine>{kRestartLine});
    EXPECT_EQ(vplc::Runtime::restarts(), 1);
    EXPECT_EQ(busCopies(), 1);
}

TEST_F(DeviceRestart, TwoRestartEventsObtainAndReleaseTwoSeparateServiceObjects) {
    const int liveBefore = vplc::Runtime::liveServices();

    restart();
    EXPECT_EQ(vplc::Runtime::liveServices(), liveBefore);
    restart();

    EXPECT_EQ(vplc::Runtime::servicesMade() - servicesAtStart_, 2);
    EXPECT_EQ(vplc::Runtime::liveServices(), liveBefore);
    EXPECT_EQ(vplc::Runtime::restarts(), 2);
    EXPECT_EQ(logs(), (std::vector<LoggedLine>{kRestartLine, kRestartLine}));
}

TEST_F(DeviceRestart, WhenNoServiceIsFoundTheLineIsLoggedAndTheLookupExceptionReachesTheHost) {
    vplc::Runtime::setServiceLookup(vplc::Runtime::Lookup::NoService);

    EXPECT_EQ(restartFailure<Arp::System::Commons::InvalidOperationException>(),
              "Could not retrieve service "
              "'Arp::Device::Interface::Services::IDeviceControlService' from service provider "
              "'Arp'.");

    EXPECT_EQ(logs(), std::vector<LoggedLine>{kRestartLine});
    EXPECT_EQ(vplc::Runtime::restarts(), 0);
    EXPECT_EQ(busCopies(), 0);
}

TEST_F(DeviceRestart, AFactoryWithoutProviderNameFailsWithAnArgumentException) {
    vplc::Runtime::setServiceLookup(vplc::Runtime::Lookup::EmptyProviderName);

    try {
        restart();
        FAIL() << "nothing thrown";
    } catch (const Arp::System::Commons::ArgumentException& error) {
        EXPECT_EQ(error.GetMessage(), "Service does not specify a service provider");
        EXPECT_EQ(error.GetArgumentName(), "TService");
        EXPECT_EQ(error.GetArgumentValue(), "Arp.Device.Interface.Services.IDeviceControlService");
    }

    EXPECT_EQ(logs(), std::vector<LoggedLine>{kRestartLine});
    EXPECT_EQ(busCopies(), 0);
}

TEST_F(DeviceRestart, AFactoryWithANullProviderNameFailsWithALogicError) {
    vplc::Runtime::setServiceLookup(vplc::Runtime::Lookup::NullProviderName);

    EXPECT_THROW(restart(), std::logic_error);

    EXPECT_EQ(logs(), std::vector<LoggedLine>{kRestartLine});
    EXPECT_EQ(busCopies(), 0);
}

TEST_F(DeviceRestart, AServiceOfTheWrongTypeFailsWithAnInvalidCastException) {
    vplc::Runtime::setServiceLookup(vplc::Runtime::Lookup::WrongType);

    EXPECT_EQ(restartFailure<Arp::System::Commons::InvalidCastException>(),
              "The service does not implement service interface "
              "'Arp.Device.Interface.Services.IDeviceControlService'.");

    EXPECT_EQ(vplc::Runtime::restarts(), 0);
    EXPECT_EQ(busCopies(), 0);
}

TEST_F(DeviceRestart, AFailingRestartPassesItsExceptionOnAndStillReleasesTheService) {
    const int liveBefore = vplc::Runtime::liveServices();
    vplc::inject(vplc::Runtime::kRestartDevice, vplc::Fault::next("device busy"));

    EXPECT_EQ(restartFailure<Arp::Exception>(), "device busy");

    EXPECT_EQ(vplc::Runtime::liveServices(), liveBefore);
    EXPECT_EQ(busCopies(), 0);
}
