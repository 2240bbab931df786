// SPDX-License-Identifier: MIT
#pragma once

#include <time.h>

#include <chrono>
#include <map>
#include <mutex>

#include "orbel/FailureCounter.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

namespace axlbench {

// Notes the CPU-time clock of every driver thread as it starts, so that the CPU time each thread
// has used can be read from another thread. Keeps the host library's lines off standard error
// and counts failures (see orbel::FailureCounter). Registered while it lives.
class ThreadCpuClocks final : public orbel::HostObserver {
public:
    // The CPU time the driver's thread has used so far; throws std::runtime_error if the driver
    // has started no thread.
    std::chrono::nanoseconds cpuTime(const CSI_base* driver) const;

    int failures() const { return failures_.total(); }

    void threadStarted(const CSI_base* driver) override;

private:
    mutable std::mutex mutex_;
    std::map<const CSI_base*, clockid_t> clocks_;
    orbel::FailureCounter failures_;
    orbel::ObserverRegistration registration_{*this};
};

}  // namespace axlbench
