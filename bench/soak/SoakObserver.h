#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "orbel/HostObserver.h"

namespace soak {

// Keeps every publication with the wall time it was made, and counts what must not happen in a
// soak: failure lines and stops.
class SoakObserver final : public orbel::HostObserver {
public:
    struct Publication {
        const CSI_base* driver;
        uint32_t id;
        std::vector<uint8_t> payload;
        std::chrono::steady_clock::time_point time;
    };

    SoakObserver();
    ~SoakObserver() override;
    SoakObserver(const SoakObserver&) = delete;
    SoakObserver& operator=(const SoakObserver&) = delete;

    std::vector<Publication> publications() const;
    int failureLines() const;
    std::vector<std::string> stops() const;

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadStarted(const CSI_base*) override {}
    void threadEnded(const CSI_base*, std::string_view) override {}

private:
    mutable std::mutex mutex_;
    std::vector<Publication> publications_;
    int failureLines_ = 0;
    std::vector<std::string> stops_;
};

}  // namespace soak
