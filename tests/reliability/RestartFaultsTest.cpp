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
// exception reaches the host, nothing is copied to the bus, and no service object is left. The
// next restart event, with the service reachable, restarts once.
std::vector<Step> refusedRestart(const Step& arm, const std::string& exception) {
    return {startDigital,
            markCalls(kWriteOutputs),
            arm,
            restartThrows(exception),
            callsSinceMark(kWriteOutputs, 0),
            restarts(0),
            liveServices(0),
            serviceLookup(Runtime::Lookup::Normal),
            deliver(kRestart, 1),
            restarts(1),
            callsSinceMark(kWriteOutputs, 1)};
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
            .steps = refusedRestart(failNext, "Arp::Exception: RSC layer not ready"),
        },
        {
            .name = "RestartGetServiceGivesAnEmptyProviderName",
            .call = std::string(Runtime::kGetService) + " (empty provider name)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (ArgumentException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .steps =
                refusedRestart(serviceLookup(Runtime::Lookup::EmptyProviderName),
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
            .steps = refusedRestart(serviceLookup(Runtime::Lookup::NullProviderName),
                                    "std::logic_error"),
        },
        {
            .name = "RestartGetServiceGivesNoService",
            .call = std::string(Runtime::kGetService) + " (no service)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (InvalidOperationException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .steps = refusedRestart(
                serviceLookup(Runtime::Lookup::NoService),
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
            .steps = refusedRestart(
                serviceLookup(Runtime::Lookup::WrongType),
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
            .steps = refusedRestart(failNext, "Arp::Exception: Device is busy"),
        },
    };
}

}  // namespace

FAULT_MATRIX_ROWS(Restart, restartRows())
