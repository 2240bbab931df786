// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

namespace orbel {

// Counts what shows that a driver did not run as configured: failure lines (level 2), stops, and
// driver threads ended by an exception. Registered while it lives, which also keeps the host
// library's readable lines off standard error.
class FailureCounter final : public HostObserver {
public:
    // The level of the driver's failure lines.
    static constexpr int kFailureLevel = 2;

    int failureLines() const { return failureLines_.load(); }
    int stops() const { return stops_.load(); }
    int exceptions() const { return exceptions_.load(); }
    int total() const { return failureLines() + stops() + exceptions(); }

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadEnded(const CSI_base* driver, std::string_view how) override;

private:
    std::atomic<int> failureLines_{0};
    std::atomic<int> stops_{0};
    std::atomic<int> exceptions_{0};
    ObserverRegistration registration_{*this};
};

}  // namespace orbel
