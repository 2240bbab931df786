// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "orbel/FailureCounter.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

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

    std::vector<Publication> publications() const;
    int failureLines() const;
    std::vector<std::string> stops() const;

    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;

private:
    mutable std::mutex mutex_;
    std::vector<Publication> publications_;
    orbel::FailureCounter failures_;
    std::vector<std::string> stops_;
    orbel::ObserverRegistration registration_{*this};
};

}  // namespace soak
