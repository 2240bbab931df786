// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "OperationDelivery.h"
#include "vplc/Runtime.h"

namespace vplc {

// The state of the virtual Arp runtime, shared by the control API (vplc::Runtime) and the
// runtime libraries (libArp.System.*), under one mutex.
class RuntimeState {
public:
    static RuntimeState& instance();

    // --- Control side.
    void setModuleMain(Runtime::MainOutcome outcome, std::string text);
    std::vector<Runtime::MainCall> moduleMainCalls() const;
    void setStartOperations(std::vector<PlcOperation> operations);
    void deliver(PlcOperation operation);
    void waitUntilDelivered();
    std::vector<Runtime::Assignment> domainAssignments() const;
    void setServiceLookup(Runtime::Lookup lookup);
    void setRestartObserver(std::function<void()> observer);
    int restarts() const { return read(restarts_); }
    int factoryResets() const { return read(factoryResets_); }
    int servicesMade() const { return read(servicesMade_); }
    int liveServices() const { return read(liveServices_); }
    void reset();

    // --- Runtime side.
    struct MainDecision {
        Runtime::MainOutcome outcome;
        std::string text;
    };
    // Records the call of ArpSystemModuleMain and tells it what to do.
    MainDecision enterModuleMain(const char* applicationName, const char* settingsPath);
    // ArpSystemModuleMain hands out a domain: the start operations follow.
    void moduleStarted();
    void recordAssignment(Runtime::Manager manager, const Arp::AppDomain& domain);
    Runtime::Lookup serviceLookup() const;
    void serviceMade();
    void serviceDestroyed();
    // Counts the restart, then tells the observer (outside the lock).
    void restartDone();
    void factoryResetDone();

private:
    RuntimeState() = default;

    // A counter's value, read under the lock.
    int read(const int& counter) const;

    struct Settings {
        Runtime::MainOutcome mainOutcome = Runtime::MainOutcome::Domain;
        std::string mainText;
        std::vector<PlcOperation> startOperations{PlcOperation_StartCold};
        Runtime::Lookup lookup = Runtime::Lookup::Normal;
        std::function<void()> restartObserver;
    };

    mutable std::mutex mutex_;
    Settings settings_;
    std::vector<Runtime::MainCall> mainCalls_;
    std::vector<Runtime::Assignment> assignments_;
    int restarts_ = 0;
    int factoryResets_ = 0;
    int servicesMade_ = 0;
    int liveServices_ = 0;
    OperationDelivery delivery_;
};

}  // namespace vplc
