// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/render/JsonRenderer.h"
#include "axlsim/run/ScenarioPlayer.h"
#include "axlsim/run/ScenarioRun.h"
#include "axlsim/serve/LiveState.h"
#include "axlsim/serve/TimelineLog.h"
#include "hosting/DriverLibrary.h"

namespace axlsim {

// A run without end on the virtual clock, paced to the wall clock in a thread of its own:
// virtual time goes `speed` times as fast as real time, or as fast as it can, or stands while
// paused. Everything that touches the run (requests, the clock's controls, reading the state)
// is done by that thread between two stretches of time, in the order asked; the timeline goes
// to the log as it happens.
class LiveRun {
public:
    struct Options {
        double speed = 1.0;
        bool maxSpeed = false;
        bool paused = false;
    };

    // The log keeps this many of the newest lines.
    static constexpr std::size_t kLogLines = 50000;

    LiveRun(const Config& config, const hosting::DriverLibrary& library, const Options& options);
    ~LiveRun();
    LiveRun(const LiveRun&) = delete;
    LiveRun& operator=(const LiveRun&) = delete;

    // Creates the drivers and lets time begin.
    void start();

    // Ends the run: the drivers are deleted cleanly and the log closed. Requests waiting or
    // made after it fail with std::runtime_error.
    void stop();

    TimelineLog& log() { return log_; }

    // Does a step (an input, an event, a PLC operation) at the current virtual time, and tells
    // that time.
    std::chrono::nanoseconds perform(Config::Step step);
    // Does several steps at one virtual time, none of them split from the others by a scan.
    std::chrono::nanoseconds perform(std::vector<Config::Step> steps);

    // Lets `reader` look at the bus as it stands at the current virtual time.
    void readBus(const std::function<void(const vplc::Station&)>& reader);

    // Adds `key` to the state, with what `value` tells when the state is asked for; before start().
    void showInState(std::string key, std::function<nlohmann::ordered_json()> value);

    // The state as GET /api/state shows it.
    nlohmann::ordered_json state();

    void pause();
    void resume();
    // Pauses, then lets exactly `t` of virtual time pass.
    void step(std::chrono::nanoseconds t);
    void setSpeed(double speed);
    void setMaxSpeed();

private:
    using Task = std::function<void()>;
    struct Call {
        Task task;
        std::shared_ptr<std::promise<void>> done;
    };

    // Runs `task` on the run's thread and waits for it.
    void call(Task task);
    void loop();
    void publish();
    void anchor();
    void playToWallClock();
    LiveState::Clock clockState() const;

    const Config& config_;
    scenarioplayer::Options playerOptions_;
    // The renderer's stream is never written: the log takes its lines.
    std::ostream nowhere_{nullptr};
    JsonRenderer renderer_;
    LiveState state_;
    TimelineLog log_;
    ScenarioRun run_;

    // The run thread's own: the pace.
    Options pace_;
    std::chrono::steady_clock::time_point wallAnchor_;
    std::chrono::nanoseconds virtualAnchor_{0};
    std::vector<std::pair<std::string, std::function<nlohmann::ordered_json()>>> shownInState_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Call> calls_;
    bool stopping_ = false;
    bool ended_ = false;
    std::thread thread_;
};

}  // namespace axlsim
