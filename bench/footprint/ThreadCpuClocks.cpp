// SPDX-License-Identifier: MIT
#include "ThreadCpuClocks.h"

#include <pthread.h>

#include <stdexcept>

namespace axlbench {

std::chrono::nanoseconds ThreadCpuClocks::cpuTime(const CSI_base* driver) const {
    clockid_t clock{};
    {
        std::lock_guard lock(mutex_);
        const auto found = clocks_.find(driver);
        if (found == clocks_.end()) {
            throw std::runtime_error("the driver has started no thread");
        }
        clock = found->second;
    }
    timespec used{};
    if (clock_gettime(clock, &used) != 0) {
        throw std::runtime_error("cannot read the CPU time of a driver thread");
    }
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

// Called on the new driver thread itself.
void ThreadCpuClocks::threadStarted(const CSI_base* driver) {
    clockid_t clock{};
    if (pthread_getcpuclockid(pthread_self(), &clock) != 0) {
        return;
    }
    std::lock_guard lock(mutex_);
    clocks_[driver] = clock;
}

}  // namespace axlbench
