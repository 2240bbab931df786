// SPDX-License-Identifier: MIT
#include "SleepingThread.h"

#include <pthread.h>

#include <stdexcept>

namespace axlbench {

namespace {

constexpr long kPauseNs = 100000000;

}  // namespace

SleepingThread::SleepingThread()
    : thread_([](const std::stop_token& stop) {
          while (!stop.stop_requested()) {
              timespec pause{0, kPauseNs};
              nanosleep(&pause, nullptr);
          }
      }) {
    if (pthread_getcpuclockid(thread_.native_handle(), &clock_) != 0) {
        throw std::runtime_error("cannot find the CPU-time clock of a thread");
    }
}

std::chrono::nanoseconds SleepingThread::cpuTime() const {
    timespec used{};
    if (clock_gettime(clock_, &used) != 0) {
        throw std::runtime_error("cannot read the CPU time of a thread");
    }
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

}  // namespace axlbench
