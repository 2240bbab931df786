// SPDX-License-Identifier: MIT
#pragma once

#include <time.h>

#include <chrono>
#include <thread>

namespace axlbench {

// A thread that does nothing but pause 100 ms at a time, as a driver does between scans: what
// any 100 ms poller costs on this machine, to set a driver thread's CPU time against. Runs while
// it lives.
class SleepingThread {
public:
    SleepingThread();

    std::chrono::nanoseconds cpuTime() const;

private:
    std::jthread thread_;  // asked to stop and joined when the object goes
    clockid_t clock_{};
};

}  // namespace axlbench
