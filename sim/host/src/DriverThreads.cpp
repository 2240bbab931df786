// SPDX-License-Identifier: MIT
#include "orbel/DriverThreads.h"

#include "SI_base.h"
#include "ThreadRegistry.h"
#include "ThreadState.h"

namespace orbel {

void endDriverThread(const CSI_base& driver) {
    if (auto state = ThreadRegistry::instance().startedFor(dynamic_cast<const void*>(&driver))) {
        state->end();
    }
}

void endAllDriverThreads() {
    for (const auto& state : ThreadRegistry::instance().all()) {
        state->end();
    }
}

void destroyDriver(CSI_base* driver) {
    if (driver == nullptr) {
        return;
    }
    endDriverThread(*driver);
    delete driver;
}

bool endRequested() {
    const ThreadState* state = ThreadState::current();
    return state != nullptr && state->endRequested();
}

int runningDriverThreads() {
    int running = 0;
    for (const auto& state : ThreadRegistry::instance().all()) {
        running += state->running() ? 1 : 0;
    }
    return running;
}

bool isDriverThread() {
    return ThreadState::current() != nullptr;
}

const CSI_base* currentThreadDriver() {
    const ThreadState* state = ThreadState::current();
    return state != nullptr ? state->driver() : nullptr;
}

void endIfRequested() {
    if (endRequested()) {
        throw ThreadEnd{};
    }
}

}  // namespace orbel
