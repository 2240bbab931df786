// SPDX-License-Identifier: MIT
#include "orbel/CallScope.h"

namespace orbel {

namespace {

// The innermost scope of this thread: its driver, and whether it still waits for the driver
// that will be constructed within it.
thread_local const CSI_base* scopeDriver = nullptr;
thread_local bool scopeCreating = false;

}  // namespace

CallScope::CallScope(const CSI_base* driver)
    : previous_(scopeDriver), previousCreating_(scopeCreating) {
    scopeDriver = driver;
    scopeCreating = driver == nullptr;
}

CallScope::~CallScope() {
    scopeDriver = previous_;
    scopeCreating = previousCreating_;
}

const CSI_base* CallScope::current() {
    return scopeDriver;
}

void CallScope::bindCreated(const CSI_base* driver) {
    if (!scopeCreating) {
        return;
    }
    scopeDriver = driver;
    scopeCreating = false;
}

}  // namespace orbel
