// SPDX-License-Identifier: MIT
#include "vplc/HostHooks.h"

#include <atomic>

#include "HostQueries.h"

namespace vplc {

namespace {

// Atomic, so that a driver thread at its scan start reads a whole hook while a host thread
// installs one; constant-initialised, so that a library that installs its hooks while it is
// loaded finds them ready.
std::atomic<ScanStartHook> scanStartHook{nullptr};
std::atomic<RunningDriverThreadsHook> runningDriverThreadsHook{nullptr};

}  // namespace

ScanStartHook setScanStartHook(ScanStartHook hook) {
    return scanStartHook.exchange(hook);
}

RunningDriverThreadsHook setRunningDriverThreadsHook(RunningDriverThreadsHook hook) {
    return runningDriverThreadsHook.exchange(hook);
}

namespace hostQueries {

void scanStarting() {
    if (const ScanStartHook hook = scanStartHook.load()) {
        hook();
    }
}

int runningDriverThreads() {
    const RunningDriverThreadsHook hook = runningDriverThreadsHook.load();
    return hook != nullptr ? hook() : 0;
}

}  // namespace hostQueries

}  // namespace vplc
