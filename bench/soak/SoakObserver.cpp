// SPDX-License-Identifier: MIT
#include "SoakObserver.h"

namespace soak {

std::vector<SoakObserver::Publication> SoakObserver::publications() const {
    std::lock_guard lock(mutex_);
    return publications_;
}

int SoakObserver::failureLines() const {
    return failures_.failureLines();
}

std::vector<std::string> SoakObserver::stops() const {
    std::lock_guard lock(mutex_);
    return stops_;
}

void SoakObserver::published(const CSI_base* driver, uint32_t id, uint32_t,
                             std::span<const uint8_t> payload) {
    const auto now = std::chrono::steady_clock::now();
    std::lock_guard lock(mutex_);
    publications_.push_back({driver, id, {payload.begin(), payload.end()}, now});
}

void SoakObserver::stopped(const CSI_base*, const stServiceParams_t*, std::string_view message) {
    std::lock_guard lock(mutex_);
    stops_.emplace_back(message);
}

}  // namespace soak
