// SPDX-License-Identifier: MIT
// Restart events: the device-control service lookup and the restart operation.

#include <string>
#include <vector>

#include "FaultMatrix.h"
#include "Steps.h"
#include "vplc/Runtime.h"

using namespace faultmatrix;
using vplc::Runtime;

namespace {

constexpr const char* kRestartEvent = "restartDevice: restart event";

// A restart whose service cannot be reached, or refuses, once `arm` has run: the notice is logged
// first, the exception reaches the host, nothing is copied to the bus, and no service object is
// left. The next restart event, with the service reachable, restarts once. `outcome` completes
// the neutral result.
FaultRow refusedRestart(const std::string& name, const InjectedFault& fault, const Step& arm,
                        const std::string& exception, const std::string& outcome) {
    return {.name = name,
            .fault = fault,
            .steps = {startDigital, markCalls(kWriteOutputs), arm, restartThrows(exception),
                      callsSinceMark(kWriteOutputs, 0), restarts(0), liveServices(0),
                      serviceLookup(Runtime::Lookup::Normal), deliver(kRestart, 1), restarts(1),
                      callsSinceMark(kWriteOutputs, 1)},
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .notes = {"exception reaches the host; no restart, no copy to the bus " + outcome,
                      "the next restart event restarts once"}};
}

}  // namespace

namespace {

std::vector<FaultRow> restartRows() {
    const std::string service = std::string(Runtime::kGetService);
    return {
        refusedRestart("RestartGetServiceThrows", {service, kRestartEvent, "RSC layer not ready"},
                       failNext, "Arp::Exception: RSC layer not ready", "(Arp::Exception)"),
        refusedRestart("RestartGetServiceGivesAnEmptyProviderName",
                       {service + " (empty provider name)", kRestartEvent},
                       serviceLookup(Runtime::Lookup::EmptyProviderName),
                       "ArgumentException: Service does not specify a service provider",
                       "(ArgumentException)"),
        refusedRestart("RestartGetServiceGivesANullProviderName",
                       {service + " (null provider name)", kRestartEvent},
                       serviceLookup(Runtime::Lookup::NullProviderName), "std::logic_error",
                       "(std::logic_error)"),
        refusedRestart("RestartGetServiceGivesNoService",
                       {service + " (no service)", kRestartEvent},
                       serviceLookup(Runtime::Lookup::NoService),
                       "InvalidOperationException: Could not retrieve service "
                       "'Arp::Device::Interface::Services::IDeviceControlService' from service "
                       "provider 'Arp'.",
                       "(InvalidOperationException)"),
        refusedRestart("RestartGetServiceGivesAServiceOfAnotherType",
                       {service + " (service of another type)", kRestartEvent},
                       serviceLookup(Runtime::Lookup::WrongType),
                       "InvalidCastException: The service does not implement service interface "
                       "'Arp.Device.Interface.Services.IDeviceControlService'.",
                       "(InvalidCastException)"),
        refusedRestart("RestartOperationFails",
                       {std::string(Runtime::kRestartDevice),
                        "restartDevice: the restart operation", "Device is busy"},
                       failNext, "Arp::Exception: Device is busy",
                       "(Arp::Exception); the service object is still released"),
    };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Restart, FaultMatrix, testing::ValuesIn(restartRows()), rowName);
