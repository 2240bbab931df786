// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/run/RunClock.h"
#include "vplc/VirtualClock.h"

namespace axlsim {

// Virtual time: driver pauses complete as soon as the host lets time pass, so a run gives the
// same result on every machine, and ten minutes of scans take a fraction of a second.
class VirtualRunClock final : public RunClock {
public:
    VirtualRunClock();
    std::chrono::nanoseconds now() const override;
    void holdDrivers() override;
    void releaseDrivers() override;
    void advanceTo(std::chrono::nanoseconds t) override;
    std::chrono::nanoseconds runNext(std::chrono::nanoseconds t) override;

private:
    vplc::VirtualClock clock_;
};

}  // namespace axlsim
