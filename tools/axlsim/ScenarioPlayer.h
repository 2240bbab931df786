#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "axlsim/Config.h"
#include "axlsim/DriverLibrary.h"
#include "axlsim/RunResult.h"
#include "axlsim/Timeline.h"

namespace axlsim {

// Plays a configuration: builds the bus, creates and initialises every driver, plays the
// scenario's steps at their times, lets the run end, and deletes the drivers cleanly.
class ScenarioPlayer {
public:
    struct Options {
        bool realTime = false;
        std::optional<std::chrono::milliseconds> until;  // ends the run here instead
        // Told now and then how far a run has come (virtual runs only).
        std::function<void(std::chrono::nanoseconds now, std::chrono::nanoseconds end)> progress;
        // Each happening as it happens (on the wall clock, in the order it happened).
        Timeline::Listener live;
    };

    static RunResult run(const Config& config, const DriverLibrary& library,
                         const Options& options);
};

}  // namespace axlsim
