// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

#include "axlsim/run/Happening.h"
#include "axlsim/run/RunResult.h"

namespace axlsim {

// Shows a run: each happening in timeline order, then the state at the end.
class TimelineRenderer {
public:
    virtual ~TimelineRenderer() = default;

    virtual void happening(const Happening& happening) = 0;
    virtual void finish(const RunResult& result) = 0;

    // The last line of a run that a signal stopped.
    virtual void interrupted(std::chrono::nanoseconds at, const std::string& signal) = 0;

    void render(const RunResult& result) {
        for (const Happening& h : result.timeline) {
            happening(h);
        }
        finish(result);
    }
};

}  // namespace axlsim
