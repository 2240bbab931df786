// SPDX-License-Identifier: MIT
#include "axlsim/run/ScenarioRun.h"

#include <algorithm>

#include "axlsim/run/VirtualRunClock.h"
#include "axlsim/run/WallRunClock.h"
#include "vplc/Runtime.h"

namespace axlsim {

namespace {

using namespace std::chrono_literals;

// Time passes in steps, after each of which the run shows what it has settled, reports its
// progress and looks whether it is asked to stop: a virtual second, or a moment of the wall
// clock.
constexpr std::chrono::nanoseconds kVirtualStep = 1s;
constexpr std::chrono::nanoseconds kWallStep = 20ms;

vplc::Station stationOf(const Config& config) {
    auto builder = vplc::Station::builder();
    for (vplc::Module module : config.bus) {
        builder.module(module);
    }
    return builder.build();
}

std::unique_ptr<RunClock> clockFor(const scenarioplayer::Options& options) {
    if (options.realTime) {
        return std::make_unique<WallRunClock>();
    }
    return std::make_unique<VirtualRunClock>();
}

}  // namespace

// Shows the virtual controller's restarts on the timeline, under the driver that asked for them.
class RestartHook {
public:
    RestartHook(Timeline& timeline, const TimelineObserver& observer) {
        vplc::Runtime::setRestartObserver(
            [&timeline, &observer] { timeline.add(observer.hostDriver(), Happening::Restart{}); });
    }
    ~RestartHook() { vplc::Runtime::setRestartObserver(nullptr); }
    RestartHook(const RestartHook&) = delete;
    RestartHook& operator=(const RestartHook&) = delete;
};

ScenarioRun::ScenarioRun(const Config& config, const hosting::DriverLibrary& library,
                         const scenarioplayer::Options& options)
    : config_(config),
      options_(options),
      end_(options.until.value_or(config.end)),
      clock_(clockFor(options)),
      station_(stationOf(config)),
      timeline_([this] { return clock_->now(); }),
      tally_(config.drivers.size()),
      observer_(timeline_),
      bus_(station_, timeline_),
      restarts_(std::make_unique<RestartHook>(timeline_, observer_)),
      plantModels_(config, station_, timeline_),
      routes_(config) {
    if (!routes_.empty()) {
        timeline_.newPublications();
    }
    timeline_.setListener([this](const Happening& happening) {
        tally_.count(happening);
        if (options_.realTime && options_.live) {
            options_.live(happening);
        }
    });
    if (!options.keepTimeline) {
        timeline_.forgetSettled();
    }
    for (std::size_t i = 0; i < config.drivers.size(); ++i) {
        drivers_.push_back(std::make_unique<HostedDriver>(static_cast<int>(i), config.drivers[i],
                                                          library, observer_, timeline_, bus_));
    }
}

ScenarioRun::~ScenarioRun() = default;

void ScenarioRun::start() {
    clock_->holdDrivers();
    plantModels_.start();
    timeline_.nextSegment();
    for (auto& driver : drivers_) {
        if (driver->create()) {
            driver->initialize();
            outputsCopied();
        }
    }
    timeline_.nextSegment();
}

void ScenarioRun::playUntil(std::chrono::nanoseconds t) {
    for (;;) {
        performDue();
        if (interrupted_ || clock_->now() >= t) {
            break;
        }
        advanceTo(std::min(nextAction().value_or(t), t));
    }
}

RunResult ScenarioRun::finish() {
    if (!released_) {
        clock_->releaseDrivers();
    }
    RunResult result;
    result.end = interrupted_ ? clock_->now() : end_;
    result.interrupted = interrupted_;
    for (auto& driver : drivers_) {
        result.drivers.push_back(RunResult::DriverState{driver->exists(), false, false, 0});
        driver->destroy();
    }
    showSettled(true);
    result.timeline = timeline_.takeOrdered();
    markShownMoves(config_, result.timeline, true);
    result.busOutputs = bus_.busOutputs();
    result.gdsOutputs = bus_.gdsOutputs();
    tally_.summarise(result, config_.expectStop);
    return result;
}

// The driver threads are held at their first scan until time first passes, so that the steps at
// 0 ms come before the drivers' first publications, like the steps at any other time come before
// the drivers that wake then. With routes, time passes one instant of the drivers at a time, so
// that the host answers each publication before any driver scans again.
void ScenarioRun::advanceTo(std::chrono::nanoseconds t) {
    if (t <= clock_->now()) {
        return;
    }
    timeline_.nextSegment();
    if (!released_) {
        clock_->releaseDrivers();
        released_ = true;
        if (!routes_.empty()) {
            timeline_.nextSegment();
            routePublications();
            return;
        }
    }
    if (routes_.empty()) {
        advanceClockTo(t);
    } else {
        runNextInstant(t);
    }
    timeline_.nextSegment();
}

void ScenarioRun::runNextInstant(std::chrono::nanoseconds t) {
    if (options_.stopRequested && options_.stopRequested()) {
        interrupted_ = true;
        return;
    }
    const std::chrono::nanoseconds step = options_.realTime ? kWallStep : kVirtualStep;
    const std::chrono::nanoseconds reached = clock_->runNext(t);
    timeline_.nextSegment();
    routePublications();
    if (reached / step != shownStep_ || reached == end_) {
        shownStep_ = reached / step;
        if (!options_.realTime && options_.progress) {
            options_.progress(reached, end_);
        }
        showSettled();
    }
}

void ScenarioRun::advanceClockTo(std::chrono::nanoseconds t) {
    const std::chrono::nanoseconds step = options_.realTime ? kWallStep : kVirtualStep;
    while (clock_->now() < t) {
        if (options_.stopRequested && options_.stopRequested()) {
            interrupted_ = true;
            return;
        }
        clock_->advanceTo(std::min(t, clock_->now() + step));
        if (!options_.realTime && options_.progress) {
            options_.progress(clock_->now(), end_);
        }
        showSettled();
    }
}

// On the wall clock the live listener has seen each happening as it came. An analog move of the
// plant waits until what follows it on its channel says whether it is shown, and what comes after
// it waits with it.
void ScenarioRun::showSettled(bool all) {
    const bool liveHere = !options_.realTime && options_.live;
    if (!liveHere && !options_.settled) {
        timeline_.settleUnseen(all);
        return;
    }
    std::vector<Happening> happenings = all ? timeline_.settleAll() : timeline_.settle();
    unshown_.insert(unshown_.end(), std::make_move_iterator(happenings.begin()),
                    std::make_move_iterator(happenings.end()));
    const std::size_t ready = markShownMoves(config_, unshown_, all);
    for (std::size_t i = 0; i < ready; ++i) {
        if (liveHere) {
            options_.live(unshown_[i]);
        }
        if (options_.settled) {
            options_.settled(unshown_[i]);
        }
    }
    unshown_.erase(unshown_.begin(), unshown_.begin() + static_cast<std::ptrdiff_t>(ready));
}

std::optional<std::chrono::nanoseconds> ScenarioRun::nextAction() const {
    std::optional<std::chrono::nanoseconds> next;
    auto consider = [&next](std::optional<std::chrono::nanoseconds> t) {
        if (t && (!next || *t < *next)) {
            next = t;
        }
    };
    if (nextStep_ < config_.scenario.size()) {
        consider(config_.scenario[nextStep_].at);
    }
    consider(plantModels_.nextChange());
    consider(routes_.nextDelivery());
    return next;
}

// What is due now, in this order: the plant's digital changes, the host's deliveries, the
// scenario's steps; again until nothing is left, since each may make more due.
void ScenarioRun::performDue() {
    for (bool acted = true; acted;) {
        acted = false;
        const std::chrono::nanoseconds now = clock_->now();
        if (const auto change = plantModels_.nextChange(); change && *change <= now) {
            plantModels_.actUntil(now);
            timeline_.nextSegment();
            acted = true;
        }
        for (const HostRoutes::Delivery& delivery : routes_.takeDue(now)) {
            const Route& route = config_.host[delivery.route];
            timeline_.add(delivery.event.driver,
                          Happening::Routed{route.from, route.to, *delivery.event.payload});
            sendEvent(delivery.event);
            acted = true;
        }
        while (nextStep_ < config_.scenario.size() && config_.scenario[nextStep_].at <= now) {
            perform(config_.scenario[nextStep_++]);
            acted = true;
        }
    }
}

void ScenarioRun::routePublications() {
    for (const Happening& happening : timeline_.newPublications()) {
        const auto& publish = std::get<Happening::Publish>(happening.what);
        if (happening.driver >= 0) {
            routes_.published(happening.driver, publish.id, publish.bytes, happening.t);
        }
    }
}

void ScenarioRun::outputsCopied() {
    timeline_.nextSegment();
    plantModels_.outputsCopied(clock_->now());
    timeline_.nextSegment();
}

void ScenarioRun::sendEvent(const Config::Event& event) {
    timeline_.add(event.driver,
                  Happening::Event{event.id, event.size, event.payload, event.source});
    drivers_[static_cast<std::size_t>(event.driver)]->deliver(event);
    outputsCopied();
}

void ScenarioRun::perform(const Config::Step& step) {
    if (!step.note.empty()) {
        timeline_.add(-1, Happening::Note{step.note});
    }
    if (const auto* input = std::get_if<Config::Input>(&step.action)) {
        timeline_.add(-1,
                      Happening::Input{input->position, input->pin, input->value, input->source});
        if (config_.bus[static_cast<std::size_t>(input->position - 1)] == vplc::Module::DI8_DO8) {
            station_.setDigitalInput(input->position, input->pin, input->value != 0);
        } else {
            station_.setAnalogInput(input->position, input->pin, input->value);
        }
    } else if (const auto* event = std::get_if<Config::Event>(&step.action)) {
        sendEvent(*event);
    } else if (const auto* plc = std::get_if<Config::Plc>(&step.action)) {
        timeline_.add(-1, Happening::Plc{static_cast<int>(plc->operation), plc->source});
        vplc::Runtime::deliver(plc->operation);
        vplc::Runtime::waitUntilDelivered();
    }
    timeline_.nextSegment();
}

}  // namespace axlsim
