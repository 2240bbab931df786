// SPDX-License-Identifier: MIT
#pragma once

#include <time.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace axlbench {

// A thread that does nothing but pause 100 ms at a time, as a driver does between scans: what
// any 100 ms poller costs on this machine, to set a driver thread's CPU time against. Runs while
// it lives.
class SleepingThread {
public:
    SleepingThread();
    ~SleepingThread();
    SleepingThread(const SleepingThread&) = delete;
    SleepingThread& operator=(const SleepingThread&) = delete;

    std::chrono::nanoseconds cpuTime() const;

private:
    std::atomic<bool> stop_{false};
    std::thread thread_;
    clockid_t clock_{};
};

}  // namespace axlbench
