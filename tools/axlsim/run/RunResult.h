// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "axlsim/run/Happening.h"

namespace axlsim {

// What a run showed: the state at its end, and its timeline when the run was asked to keep it.
struct RunResult {
    struct DriverState {
        bool created = false;
        bool stopped = false;  // stopWithError was called
        bool threw = false;    // an exception left the driver
        int publishes = 0;
    };

    std::vector<Happening> timeline;  // empty unless scenarioplayer::Options::keepTimeline
    std::vector<DriverState> drivers;
    std::vector<std::vector<uint8_t>> busOutputs;  // by position from 1
    std::vector<std::vector<uint8_t>> gdsOutputs;
    int restarts = 0;
    std::chrono::nanoseconds end{0};  // where the run ended: its end, or where it was stopped
    bool interrupted = false;         // stopped before its end at the host's request
    bool wentAsExpected = true;       // stopped or threw exactly when the configuration expects it

    int exitStatus() const { return wentAsExpected ? 0 : 1; }
};

}  // namespace axlsim
