// SPDX-License-Identifier: MIT
#include "RuntimeState.h"

#include <utility>

namespace vplc {

RuntimeState& RuntimeState::instance() {
    static RuntimeState state;
    return state;
}

void RuntimeState::setModuleMain(Runtime::MainOutcome outcome, std::string text) {
    std::lock_guard lock(mutex_);
    settings_.mainOutcome = outcome;
    settings_.mainText = std::move(text);
}

std::vector<Runtime::MainCall> RuntimeState::moduleMainCalls() const {
    std::lock_guard lock(mutex_);
    return mainCalls_;
}

void RuntimeState::setStartOperations(std::vector<PlcOperation> operations) {
    std::lock_guard lock(mutex_);
    settings_.startOperations = std::move(operations);
}

void RuntimeState::deliver(PlcOperation operation) {
    delivery_.deliver({operation});
}

void RuntimeState::waitUntilDelivered() {
    delivery_.waitUntilDelivered();
}

std::vector<Runtime::Assignment> RuntimeState::domainAssignments() const {
    std::lock_guard lock(mutex_);
    return assignments_;
}

void RuntimeState::setServiceLookup(Runtime::Lookup lookup) {
    std::lock_guard lock(mutex_);
    settings_.lookup = lookup;
}

void RuntimeState::setRestartObserver(std::function<void()> observer) {
    std::lock_guard lock(mutex_);
    settings_.restartObserver = std::move(observer);
}

int RuntimeState::read(const int& counter) const {
    std::lock_guard lock(mutex_);
    return counter;
}

void RuntimeState::reset() {
    delivery_.waitUntilDelivered();
    std::lock_guard lock(mutex_);
    settings_ = Settings{};
    mainCalls_.clear();
    assignments_.clear();
    restarts_ = 0;
    factoryResets_ = 0;
    servicesMade_ = 0;
}

RuntimeState::MainDecision RuntimeState::enterModuleMain(const char* applicationName,
                                                         const char* settingsPath) {
    std::lock_guard lock(mutex_);
    mainCalls_.push_back({applicationName != nullptr ? applicationName : "",
                          settingsPath != nullptr ? settingsPath : ""});
    return {settings_.mainOutcome, settings_.mainText};
}

void RuntimeState::moduleStarted() {
    std::vector<PlcOperation> operations;
    {
        std::lock_guard lock(mutex_);
        operations = settings_.startOperations;
    }
    delivery_.deliver(operations);
}

void RuntimeState::recordAssignment(Runtime::Manager manager, const Arp::AppDomain& domain) {
    std::lock_guard lock(mutex_);
    assignments_.push_back({manager, &domain});
}

Runtime::Lookup RuntimeState::serviceLookup() const {
    std::lock_guard lock(mutex_);
    return settings_.lookup;
}

void RuntimeState::serviceMade() {
    std::lock_guard lock(mutex_);
    ++servicesMade_;
    ++liveServices_;
}

void RuntimeState::serviceDestroyed() {
    std::lock_guard lock(mutex_);
    --liveServices_;
}

void RuntimeState::restartDone() {
    std::function<void()> observer;
    {
        std::lock_guard lock(mutex_);
        ++restarts_;
        observer = settings_.restartObserver;
    }
    if (observer) {
        observer();
    }
}

void RuntimeState::factoryResetDone() {
    std::lock_guard lock(mutex_);
    ++factoryResets_;
}

}  // namespace vplc
