// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

#include "orbel/FailureCounter.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

namespace axlbench {

// Keeps the host library's lines off standard error while a measurement runs, and counts what
// would show that a driver did not start as configured: its stops and its failure lines.
// Registered while it lives.
class SilentHost final : public orbel::HostObserver {
public:
    int stops() const { return failures_.stops(); }
    int failures() const { return failures_.failureLines(); }
    int publications() const { return publications_.load(); }

    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;

private:
    orbel::FailureCounter failures_;
    std::atomic<int> publications_{0};
    orbel::ObserverRegistration registration_{*this};
};

}  // namespace axlbench
