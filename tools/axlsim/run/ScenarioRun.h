// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/BusWatch.h"
#include "axlsim/run/HostRoutes.h"
#include "axlsim/run/HostedDriver.h"
#include "axlsim/run/PlantModels.h"
#include "axlsim/run/RunClock.h"
#include "axlsim/run/RunResult.h"
#include "axlsim/run/RunTally.h"
#include "axlsim/run/ScenarioPlayer.h"
#include "axlsim/run/Timeline.h"
#include "axlsim/run/TimelineObserver.h"
#include "hosting/DriverLibrary.h"
#include "vplc/Station.h"

namespace axlsim {

class RestartHook;

// One run of a configuration, played a stretch at a time: a batch run plays it to its end in one
// go, the live server as the wall clock goes and as requests come. The members are declared in
// the order they must be made: the clock before any driver thread starts, the bus before any
// driver uses it; they are taken apart the other way round, the drivers first. Not safe to use
// from two threads at once.
class ScenarioRun {
public:
    ScenarioRun(const Config& config, const hosting::DriverLibrary& library,
                const scenarioplayer::Options& options);
    ~ScenarioRun();
    ScenarioRun(const ScenarioRun&) = delete;
    ScenarioRun& operator=(const ScenarioRun&) = delete;

    // Creates and initialises every driver, at time 0.
    void start();

    // Plays what is due and lets time pass up to `t`, then plays what is due at `t`; stops
    // early, at the present time, when the options ask for it.
    void playUntil(std::chrono::nanoseconds t);

    // Does one step now, as if the scenario had it at this time; what it causes comes after it.
    void perform(const Config::Step& step);

    // Hands the options' settled listener, and on the virtual clock the live one, what the
    // timeline has settled so far; with `all`, everything.
    void showSettled(bool all = false);

    // Deletes the drivers cleanly and tells what the run showed.
    RunResult finish();

    std::chrono::nanoseconds now() const { return clock_->now(); }
    std::chrono::nanoseconds end() const { return end_; }
    vplc::Station& station() { return station_; }
    const BusWatch& bus() const { return bus_; }

    // A run without end: what the live listener has been shown is not kept for finish().
    void forgetShown() { timeline_.forgetSettled(); }

private:
    void advanceTo(std::chrono::nanoseconds t);
    void runNextInstant(std::chrono::nanoseconds t);
    void advanceClockTo(std::chrono::nanoseconds t);
    std::optional<std::chrono::nanoseconds> nextAction() const;
    void performDue();
    void routePublications();
    void outputsCopied();
    void sendEvent(const Config::Event& event);

    const Config& config_;
    const scenarioplayer::Options& options_;
    std::chrono::nanoseconds end_;
    std::unique_ptr<RunClock> clock_;
    vplc::Station station_;
    Timeline timeline_;
    RunTally tally_;  // under the timeline's lock
    TimelineObserver observer_;
    BusWatch bus_;
    std::unique_ptr<RestartHook> restarts_;
    PlantModels plantModels_;
    HostRoutes routes_;
    std::vector<std::unique_ptr<HostedDriver>> drivers_;
    bool released_ = false;
    bool interrupted_ = false;
    std::size_t nextStep_ = 0;
    int64_t shownStep_ = 0;           // the last step of time after which the run showed itself
    std::vector<Happening> unshown_;  // settled, waiting for an analog move to be decided
};

}  // namespace axlsim
