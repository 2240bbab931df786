// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/RunResult.h"
#include "axlsim/run/Timeline.h"
#include "hosting/DriverLibrary.h"

namespace axlsim::scenarioplayer {

// Plays a configuration: builds the bus, creates and initialises every driver, plays the
// scenario's steps at their times, lets the run end, and deletes the drivers cleanly.

struct Options {
    bool realTime = false;
    std::optional<std::chrono::milliseconds> until;  // ends the run here instead
    // Told now and then how far a run has come (virtual runs only).
    std::function<void(std::chrono::nanoseconds now, std::chrono::nanoseconds end)> progress;
    // Each happening as the run goes: on the wall clock as it happens, on the virtual clock
    // as soon as its place in the timeline is certain (in timeline order).
    Timeline::Listener live;
    // Each happening once its place in the timeline and whether its line is shown are
    // certain, in timeline order, on either clock: for what is written as the run goes.
    Timeline::Listener settled;
    // RunResult::timeline holds the whole timeline; a run that streams it can do without,
    // and then keeps only what is not yet settled, however long it runs.
    bool keepTimeline = true;
    // Asked now and then; true stops the run at the present time, as if it ended there.
    std::function<bool()> stopRequested;
};

RunResult run(const Config& config, const hosting::DriverLibrary& library, const Options& options);

}  // namespace axlsim::scenarioplayer
