#pragma once

#include <time.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>

#include "orbel/HostObserver.h"

namespace axlbench {

// Notes the CPU-time clock of every driver thread as it starts, so that the CPU time each thread
// has used can be read from another thread. Keeps the host library's lines off standard error
// and counts failure lines and stops. Registered while it lives.
class ThreadCpuClocks final : public orbel::HostObserver {
public:
    ThreadCpuClocks();
    ~ThreadCpuClocks() override;
    ThreadCpuClocks(const ThreadCpuClocks&) = delete;
    ThreadCpuClocks& operator=(const ThreadCpuClocks&) = delete;

    // The CPU time the driver's thread has used so far; throws std::runtime_error if the driver
    // has started no thread.
    std::chrono::nanoseconds cpuTime(const CSI_base* driver) const;

    int failures() const { return failures_.load(); }

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadStarted(const CSI_base* driver) override;
    void threadEnded(const CSI_base* driver, std::string_view how) override;

private:
    mutable std::mutex mutex_;
    std::map<const CSI_base*, clockid_t> clocks_;
    std::atomic<int> failures_{0};
};

}  // namespace axlbench
