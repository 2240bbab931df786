// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/Timeline.h"
#include "vplc/Station.h"

namespace axlsim {

// The plant section at work on the virtual bus. Digital inputs change at exact times (a wire's
// delay after its output changed, a square signal's edges), which the player asks for and
// lets happen as host actions; analog inputs are computed whenever the controller copies the
// inputs into the GDS, from the time of that copy. Every move goes on the timeline.
class PlantModels {
public:
    using Time = std::chrono::nanoseconds;

    PlantModels(const Config& config, vplc::Station& station, Timeline& timeline);
    ~PlantModels();
    PlantModels(const PlantModels&) = delete;
    PlantModels& operator=(const PlantModels&) = delete;

    // Puts every wired input in its output's rest state and starts the generators; from now on
    // each copy of the inputs computes the analog inputs.
    void start();

    // When the next digital input is due to change, if ever.
    std::optional<Time> nextChange() const;

    // Makes the digital changes due at or before `now`.
    void actUntil(Time now);

    // After a host call, which may have copied outputs to the bus: notices the output pins that
    // changed and schedules what follows them.
    void outputsCopied(Time now);

private:
    struct DigitalChange {
        std::size_t model;  // index into the plant section
        bool on;
    };
    struct Target {
        Time from;  // effective from
        double value;
    };
    // A link's first-order lag: y(t) = target + (y0 - target) * exp(-(t - t0) / lag).
    struct Lag {
        double y0 = 0.0;
        Time t0{0};
        double target = 0.0;
        std::deque<Target> pending;
    };

    void inputCopy();
    void setDigital(std::size_t model, bool on);
    void scheduleEdge(std::size_t model, Time after);
    std::optional<double> analogValue(std::size_t model, Time now);
    double lagValue(std::size_t model, Lag& lag, Time now) const;
    double outputValue(const Pin& pin, const std::vector<std::vector<uint8_t>>& outputs) const;

    const Config& config_;
    vplc::Station& station_;
    Timeline& timeline_;
    mutable std::mutex mutex_;
    std::multimap<Time, DigitalChange> due_;
    std::map<std::size_t, Lag> lags_;  // by model index
    std::vector<std::vector<uint8_t>> outputs_;
};

// Shows each analog move on a timeline that a publication of its channel follows before the
// channel moves again: the move that the driver reported. Unless the timeline is complete,
// a move that nothing follows yet is undecided; returns how many happenings from the start
// are decided.
std::size_t markShownMoves(const Config& config, std::vector<Happening>& timeline, bool complete);

}  // namespace axlsim
