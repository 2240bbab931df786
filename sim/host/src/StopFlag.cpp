// SPDX-License-Identifier: MIT
#include "orbel/StopFlag.h"

#include <atomic>

namespace orbel {

namespace {

std::atomic<bool> stopSetsFlag{true};

}  // namespace

void setStopSetsStopFlag(bool sets) {
    stopSetsFlag.store(sets);
}

bool stopSetsStopFlag() {
    return stopSetsFlag.load();
}

}  // namespace orbel
