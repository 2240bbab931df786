// SPDX-License-Identifier: MIT
#include "axlsim/serve/LiveRun.h"

#include <algorithm>
#include <stdexcept>

namespace axlsim {

namespace {

using namespace std::chrono_literals;

// The wall-clock tick at which a paced run looks again at the time.
constexpr auto kTick = 1ms;
// The most virtual time played between two looks at the requests, so that they wait little even
// at the highest speed.
constexpr std::chrono::nanoseconds kStretch = 20ms;
// A paced run that falls further behind than this gives up catching up and goes on from where
// it is.
constexpr std::chrono::nanoseconds kMostBehind = 1s;

}  // namespace

LiveRun::LiveRun(const Config& config, const hosting::DriverLibrary& library,
                 const Options& options)
    : config_(config),
      renderer_(nowhere_, config),
      state_(config),
      log_(kLogLines),
      run_(config, library, playerOptions_),
      pace_(options) {
    // Read only by the run's thread, once the run has started.
    playerOptions_.live = [this](const Happening& happening) {
        state_.saw(happening);
        if (auto line = renderer_.line(happening)) {
            log_.append(std::move(*line));
        }
    };
    run_.forgetShown();
}

LiveRun::~LiveRun() {
    stop();
}

void LiveRun::start() {
    thread_ = std::thread([this] { loop(); });
}

void LiveRun::stop() {
    {
        std::lock_guard lock(mutex_);
        if (stopping_ && !thread_.joinable()) {
            return;
        }
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
    log_.close();
}

void LiveRun::call(Task task) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    {
        std::lock_guard lock(mutex_);
        if (stopping_ || ended_) {
            throw std::runtime_error("the run has ended");
        }
        calls_.push_back(Call{std::move(task), done});
    }
    wake_.notify_all();
    finished.get();
}

std::chrono::nanoseconds LiveRun::perform(Config::Step step) {
    std::vector<Config::Step> steps;
    steps.push_back(std::move(step));
    return perform(std::move(steps));
}

std::chrono::nanoseconds LiveRun::perform(std::vector<Config::Step> steps) {
    std::chrono::nanoseconds at{0};
    call([this, &steps, &at] {
        at = run_.now();
        for (const Config::Step& step : steps) {
            run_.perform(step);
        }
        publish();
    });
    return at;
}

void LiveRun::readBus(const std::function<void(const vplc::Station&)>& reader) {
    call([this, &reader] { reader(run_.station()); });
}

void LiveRun::showInState(std::string key, std::function<nlohmann::ordered_json()> value) {
    shownInState_.emplace_back(std::move(key), std::move(value));
}

nlohmann::ordered_json LiveRun::state() {
    nlohmann::ordered_json result;
    call([this, &result] { result = state_.render(clockState(), run_.station()); });
    for (const auto& [key, value] : shownInState_) {
        result[key] = value();
    }
    return result;
}

void LiveRun::pause() {
    call([this] { pace_.paused = true; });
}

void LiveRun::resume() {
    call([this] {
        pace_.paused = false;
        anchor();
    });
}

void LiveRun::step(std::chrono::nanoseconds t) {
    call([this, t] {
        pace_.paused = true;
        run_.playUntil(run_.now() + t);
        publish();
    });
}

void LiveRun::setSpeed(double speed) {
    call([this, speed] {
        pace_.speed = speed;
        pace_.maxSpeed = false;
        anchor();
    });
}

void LiveRun::setMaxSpeed() {
    call([this] { pace_.maxSpeed = true; });
}

LiveState::Clock LiveRun::clockState() const {
    return LiveState::Clock{run_.now(), pace_.paused, pace_.speed, pace_.maxSpeed};
}

void LiveRun::anchor() {
    wallAnchor_ = std::chrono::steady_clock::now();
    virtualAnchor_ = run_.now();
}

void LiveRun::publish() {
    run_.showSettled();
}

void LiveRun::playToWallClock() {
    const std::chrono::nanoseconds now = run_.now();
    std::chrono::nanoseconds target = now + kStretch;
    if (!pace_.maxSpeed) {
        const auto wall = std::chrono::steady_clock::now() - wallAnchor_;
        const auto paced = virtualAnchor_ +
                           std::chrono::duration_cast<std::chrono::nanoseconds>(wall * pace_.speed);
        if (paced - now > kMostBehind) {
            anchor();
            return;
        }
        target = std::min(target, paced);
    }
    if (target > now) {
        run_.playUntil(target);
        publish();
    }
}

void LiveRun::loop() {
    run_.start();
    publish();
    anchor();
    for (;;) {
        std::deque<Call> calls;
        {
            std::unique_lock lock(mutex_);
            const bool busy = !pace_.paused && pace_.maxSpeed;
            auto asked = [this] { return stopping_ || !calls_.empty(); };
            if (!busy && !asked()) {
                if (pace_.paused) {
                    wake_.wait(lock, asked);
                } else {
                    wake_.wait_for(lock, kTick, asked);
                }
            }
            if (stopping_) {
                break;
            }
            calls.swap(calls_);
        }
        for (Call& call : calls) {
            try {
                call.task();
                call.done->set_value();
            } catch (...) {
                call.done->set_exception(std::current_exception());
            }
        }
        if (!pace_.paused) {
            playToWallClock();
        }
    }
    std::deque<Call> abandoned;
    {
        std::lock_guard lock(mutex_);
        ended_ = true;
        abandoned.swap(calls_);
    }
    for (Call& call : abandoned) {
        call.done->set_exception(std::make_exception_ptr(std::runtime_error("the run has ended")));
    }
    run_.finish();
}

}  // namespace axlsim
