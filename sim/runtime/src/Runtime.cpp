// SPDX-License-Identifier: MIT
#include "vplc/Runtime.h"

#include <utility>

#include "RuntimeState.h"

namespace vplc {

void Runtime::setModuleMain(MainOutcome outcome, std::string text) {
    RuntimeState::instance().setModuleMain(outcome, std::move(text));
}

std::vector<Runtime::MainCall> Runtime::moduleMainCalls() {
    return RuntimeState::instance().moduleMainCalls();
}

void Runtime::setStartOperations(std::vector<PlcOperation> operations) {
    RuntimeState::instance().setStartOperations(std::move(operations));
}

void Runtime::deliver(PlcOperation operation) {
    RuntimeState::instance().deliver(operation);
}

void Runtime::waitUntilDelivered() {
    RuntimeState::instance().waitUntilDelivered();
}

std::vector<Runtime::Assignment> Runtime::domainAssignments() {
    return RuntimeState::instance().domainAssignments();
}

void Runtime::setServiceLookup(Lookup lookup) {
    RuntimeState::instance().setServiceLookup(lookup);
}

void Runtime::setRestartObserver(std::function<void()> observer) {
    RuntimeState::instance().setRestartObserver(std::move(observer));
}

int Runtime::restarts() {
    return RuntimeState::instance().restarts();
}

int Runtime::factoryResets() {
    return RuntimeState::instance().factoryResets();
}

int Runtime::servicesMade() {
    return RuntimeState::instance().servicesMade();
}

int Runtime::liveServices() {
    return RuntimeState::instance().liveServices();
}

void Runtime::reset() {
    RuntimeState::instance().reset();
}

}  // namespace vplc
