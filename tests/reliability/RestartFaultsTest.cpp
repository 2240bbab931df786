// SPDX-License-Identifier: MIT
// Restart events: the device-control service lookup and the restart operation.

#include <string>
#include <vector>

#include "FaultRowTest.h"
#include "vplc/Runtime.h"

using namespace faultmatrix;
using vplc::Runtime;

namespace {

// A restart whose service cannot be reached, or refuses: the notice is logged first, the
// exception reaches the host, nothing is copied to the bus, and no service object is left.
std::function<void(Scenario&)> failedRestart(const std::function<void(Scenario&)>& arm,
                                             const std::string& expected) {
    return [arm, expected](Scenario& s) {
        s.startDigital();
        const int copies = s.calls(kWriteOutputs);
        arm(s);
        EXPECT_EQ(s.restartFailure(), expected);
        EXPECT_EQ(s.calls(kWriteOutputs), copies);
        EXPECT_EQ(Runtime::restarts(), 0);
        EXPECT_EQ(Runtime::liveServices(), 0);
        Runtime::setServiceLookup(Runtime::Lookup::Normal);
        s.deliver(kRestart, 1);
        EXPECT_EQ(Runtime::restarts(), 1);
        EXPECT_EQ(s.calls(kWriteOutputs), copies + 1);
    };
}

std::function<void(Scenario&)> lookup(Runtime::Lookup mode) {
    return [mode](Scenario&) { Runtime::setServiceLookup(mode); };
}

std::vector<FaultRow> restartRows() {
    const std::string restartAgain = "the next restart event restarts once";
    const std::string neutral = "exception reaches the host; no restart, no copy to the bus";
    return {
        {
            .name = "RestartGetServiceThrows",
            .call = std::string(Runtime::kGetService),
            .site = "restartDevice: restart event",
            .error = "RSC layer not ready",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (Arp::Exception)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart([](Scenario& s) { s.failNext(); },
                                 "Arp::Exception: RSC layer not ready"),
        },
        {
            .name = "RestartGetServiceGivesAnEmptyProviderName",
            .call = std::string(Runtime::kGetService) + " (empty provider name)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (ArgumentException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(lookup(Runtime::Lookup::EmptyProviderName),
                                 "ArgumentException: Service does not specify a service provider"),
        },
        {
            .name = "RestartGetServiceGivesANullProviderName",
            .call = std::string(Runtime::kGetService) + " (null provider name)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (std::logic_error)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(lookup(Runtime::Lookup::NullProviderName), "std::logic_error"),
        },
        {
            .name = "RestartGetServiceGivesNoService",
            .call = std::string(Runtime::kGetService) + " (no service)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (InvalidOperationException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(
                lookup(Runtime::Lookup::NoService),
                "InvalidOperationException: Could not retrieve service "
                "'Arp::Device::Interface::Services::IDeviceControlService' from service provider "
                "'Arp'."),
        },
        {
            .name = "RestartGetServiceGivesAServiceOfAnotherType",
            .call = std::string(Runtime::kGetService) + " (service of another type)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (InvalidCastException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(
                lookup(Runtime::Lookup::WrongType),
                "InvalidCastException: The service does not implement service interface "
                "'Arp.Device.Interface.Services.IDeviceControlService'."),
        },
        {
            .name = "RestartOperationFails",
            .call = std::string(Runtime::kRestartDevice),
            .site = "restartDevice: the restart operation",
            .error = "Device is busy",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (Arp::Exception); the service object is still released",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run =
                failedRestart([](Scenario& s) { s.failNext(); }, "Arp::Exception: Device is busy"),
        },
    };
}

}  // namespace

FAULT_MATRIX_ROWS(Restart, restartRows())
