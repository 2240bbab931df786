#pragma once

#include <atomic>

#include "orbel/HostObserver.h"

namespace axlbench {

// Keeps the host library's lines off standard error while a measurement runs, and counts what
// would show that a driver did not start as configured: its stops and its failure lines.
// Registered while it lives.
class SilentHost final : public orbel::HostObserver {
public:
    SilentHost();
    ~SilentHost() override;
    SilentHost(const SilentHost&) = delete;
    SilentHost& operator=(const SilentHost&) = delete;

    int stops() const { return stops_.load(); }
    int failures() const { return failures_.load(); }
    int publications() const { return publications_.load(); }

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadStarted(const CSI_base* driver) override;
    void threadEnded(const CSI_base* driver, std::string_view how) override;

private:
    std::atomic<int> stops_{0};
    std::atomic<int> failures_{0};
    std::atomic<int> publications_{0};
};

}  // namespace axlbench
