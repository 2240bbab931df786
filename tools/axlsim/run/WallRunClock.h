// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

#include "axlsim/run/RunClock.h"

namespace axlsim {

// The wall clock: driver threads pause for real and run alongside the host, so the order of
// happenings at nearly the same moment may differ from run to run.
class WallRunClock final : public RunClock {
public:
    WallRunClock();

    std::chrono::nanoseconds now() const override;
    void holdDrivers() override {}
    void releaseDrivers() override {}
    void advanceTo(std::chrono::nanoseconds t) override;
    // The wall clock cannot tell when a thread wakes: it looks again every millisecond.
    std::chrono::nanoseconds runNext(std::chrono::nanoseconds t) override;

private:
    std::chrono::steady_clock::time_point start_;
};

}  // namespace axlsim
