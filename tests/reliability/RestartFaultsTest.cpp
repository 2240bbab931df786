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
        {.name = "RestartGetServiceThrows",
         .fault = {std::string(Runtime::kGetService), "restartDevice: restart event",
                   "RSC layer not ready"},
         .steps = refusedRestart(failNext, "Arp::Exception: RSC layer not ready"),
         .log = {notice(kRestartNotice), notice(kRestartNotice)},
         .cells = {neutral + " (Arp::Exception)", restartAgain}},
        {.name = "RestartGetServiceGivesAnEmptyProviderName",
         .fault = {std::string(Runtime::kGetService) + " (empty provider name)",
                   "restartDevice: restart event"},
         .steps = refusedRestart(serviceLookup(Runtime::Lookup::EmptyProviderName),
                                 "ArgumentException: Service does not specify a service provider"),
         .log = {notice(kRestartNotice), notice(kRestartNotice)},
         .cells = {neutral + " (ArgumentException)", restartAgain}},
        {.name = "RestartGetServiceGivesANullProviderName",
         .fault = {std::string(Runtime::kGetService) + " (null provider name)",
                   "restartDevice: restart event"},
         .steps =
             refusedRestart(serviceLookup(Runtime::Lookup::NullProviderName), "std::logic_error"),
         .log = {notice(kRestartNotice), notice(kRestartNotice)},
         .cells = {neutral + " (std::logic_error)", restartAgain}},
        {.name = "RestartGetServiceGivesNoService",
         .fault = {std::string(Runtime::kGetService) + " (no service)",
                   "restartDevice: restart event"},
         .steps = refusedRestart(
             serviceLookup(Runtime::Lookup::NoService),
             "InvalidOperationException: Could not retrieve service "
             "'Arp::Device::Interface::Services::IDeviceControlService' from service provider "
             "'Arp'."),
         .log = {notice(kRestartNotice), notice(kRestartNotice)},
         .cells = {neutral + " (InvalidOperationException)", restartAgain}},
        {.name = "RestartGetServiceGivesAServiceOfAnotherType",
         .fault = {std::string(Runtime::kGetService) + " (service of another type)",
                   "restartDevice: restart event"},
         .steps = refusedRestart(
             serviceLookup(Runtime::Lookup::WrongType),
             "InvalidCastException: The service does not implement service interface "
             "'Arp.Device.Interface.Services.IDeviceControlService'."),
         .log = {notice(kRestartNotice), notice(kRestartNotice)},
         .cells = {neutral + " (InvalidCastException)", restartAgain}},
        {.name = "RestartOperationFails",
         .fault = {std::string(Runtime::kRestartDevice), "restartDevice: the restart operation",
                   "Device is busy"},
         .steps = refusedRestart(failNext, "Arp::Exception: Device is busy"),
         .log = {notice(kRestartNotice), notice(kRestartNotice)},
         .cells = {neutral + " (Arp::Exception); the service object is still released",
                   restartAgain}},

    };
}

}  // namespace

FAULT_MATRIX_ROWS(Restart, restartRows())
