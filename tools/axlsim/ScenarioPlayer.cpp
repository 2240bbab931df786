#include "axlsim/ScenarioPlayer.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "axlsim/BusWatch.h"
#include "axlsim/HostRoutes.h"
#include "axlsim/HostedDriver.h"
#include "axlsim/PlantModels.h"
#include "axlsim/TimelineObserver.h"
#include "axlsim/VirtualRunClock.h"
#include "axlsim/WallRunClock.h"
#include "vplc/Plant.h"
#include "vplc/Runtime.h"

#if defined(__SANITIZE_ADDRESS__)
// The driver keeps the payload buffers of its inputs for the life of the process, by design; a
// host cannot free them, so they are no leak of axlsim's.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libplcnext_driver.so\n";
}
#endif

namespace axlsim {

namespace {

using namespace std::chrono_literals;

// A virtual run reports its progress once per virtual second.
constexpr std::chrono::nanoseconds kProgressStep = 1s;

vplc::Plant plantOf(const Config& config) {
    auto builder = vplc::Plant::builder();
    for (vplc::Module module : config.bus)
        builder.module(module);
    return builder.build();
}

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

std::unique_ptr<RunClock> clockFor(const ScenarioPlayer::Options& options) {
    if (options.realTime)
        return std::make_unique<WallRunClock>();
    return std::make_unique<VirtualRunClock>();
}

// One run. The members are declared in the order they must be made: the clock before any
// driver thread starts, the bus before any driver uses it; they are taken apart the other way
// round, the drivers first.
class Run {
public:
    Run(const Config& config, const DriverLibrary& library, const ScenarioPlayer::Options& options)
        : config_(config),
          options_(options),
          clock_(clockFor(options)),
          plant_(plantOf(config)),
          timeline_([this] { return clock_->now(); }),
          observer_(timeline_),
          bus_(plant_, timeline_),
          restarts_(timeline_, observer_),
          plantModels_(config, plant_, timeline_),
          routes_(config) {
        if (options.realTime && options.live)
            timeline_.setListener(options.live);
        for (std::size_t i = 0; i < config.drivers.size(); ++i) {
            drivers_.push_back(std::make_unique<HostedDriver>(
                static_cast<int>(i), config.drivers[i], library, observer_, timeline_, bus_));
        }
    }

    RunResult play() {
        const std::chrono::nanoseconds end = options_.until.value_or(config_.end);
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

        for (;;) {
            performDue();
            if (clock_->now() >= end)
                break;
            advanceTo(std::min(nextAction().value_or(end), end), end);
        }
        if (!released_)
            clock_->releaseDrivers();

        RunResult result;
        for (auto& driver : drivers_) {
            result.drivers.push_back(RunResult::DriverState{driver->exists(), false, false, 0});
            driver->destroy();
        }
        result.end = end;
        result.timeline = timeline_.ordered();
        PlantModels::markShownMoves(config_, result.timeline);
        result.busOutputs = bus_.busOutputs();
        result.gdsOutputs = bus_.gdsOutputs();
        summarise(result);
        return result;
    }

private:
    // The driver threads are held at their first scan until time first passes, so that the
    // steps at 0 ms come before the drivers' first publications, like the steps at any other
    // time come before the drivers that wake then. With routes, time passes one instant at a
    // time, so that the host answers each publication before the next scan of any driver.
    void advanceTo(std::chrono::nanoseconds t, std::chrono::nanoseconds end) {
        if (t <= clock_->now())
            return;
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
            advanceClockTo(t, end);
        } else {
            const std::chrono::nanoseconds reached = clock_->runNext(t);
            timeline_.nextSegment();
            routePublications();
            if (options_.progress && !options_.realTime && reached / kProgressStep != reported_) {
                reported_ = reached / kProgressStep;
                options_.progress(reached, end);
            }
        }
        timeline_.nextSegment();
    }

    void advanceClockTo(std::chrono::nanoseconds t, std::chrono::nanoseconds end) {
        if (options_.realTime || !options_.progress) {
            clock_->advanceTo(t);
            return;
        }
        while (clock_->now() < t) {
            clock_->advanceTo(std::min(t, clock_->now() + kProgressStep));
            options_.progress(clock_->now(), end);
        }
    }

    std::optional<std::chrono::nanoseconds> nextAction() const {
        std::optional<std::chrono::nanoseconds> next;
        auto consider = [&next](std::optional<std::chrono::nanoseconds> t) {
            if (t && (!next || *t < *next))
                next = t;
        };
        if (nextStep_ < config_.scenario.size())
            consider(config_.scenario[nextStep_].at);
        consider(plantModels_.nextChange());
        consider(routes_.nextDelivery());
        return next;
    }

    // What is due now, in this order: the plant's digital changes, the host's deliveries, the
    // scenario's steps; again until nothing is left, since each may make more due.
    void performDue() {
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
                timeline_.nextSegment();
                acted = true;
            }
        }
    }

    void routePublications() {
        for (const Happening& happening : timeline_.since(routed_)) {
            if (const auto* publish = std::get_if<Happening::Publish>(&happening.what);
                publish != nullptr && happening.driver >= 0)
                routes_.published(happening.driver, publish->id, publish->bytes, happening.t);
        }
    }

    void outputsCopied() {
        timeline_.nextSegment();
        plantModels_.outputsCopied(clock_->now());
        timeline_.nextSegment();
    }

    void sendEvent(const Config::Event& event) {
        timeline_.add(event.driver, Happening::Event{event.id, event.size, event.payload});
        drivers_[static_cast<std::size_t>(event.driver)]->deliver(event);
        outputsCopied();
    }

    void perform(const Config::Step& step) {
        if (!step.note.empty())
            timeline_.add(-1, Happening::Note{step.note});
        if (const auto* input = std::get_if<Config::Input>(&step.action)) {
            timeline_.add(-1, Happening::Input{input->position, input->pin, input->value});
            if (config_.bus[static_cast<std::size_t>(input->position - 1)] == vplc::Module::DI8_DO8)
                plant_.setDigitalInput(input->position, input->pin, input->value != 0);
            else
                plant_.setAnalogInput(input->position, input->pin, input->value);
        } else if (const auto* event = std::get_if<Config::Event>(&step.action)) {
            sendEvent(*event);
        } else if (const auto* plc = std::get_if<Config::Plc>(&step.action)) {
            timeline_.add(-1, Happening::Plc{static_cast<int>(plc->operation)});
            vplc::Runtime::deliver(plc->operation);
            vplc::Runtime::waitUntilDelivered();
        }
    }

    void summarise(RunResult& result) const {
        bool failed = false;
        for (const Happening& happening : result.timeline) {
            if (std::holds_alternative<Happening::Restart>(happening.what))
                ++result.restarts;
            if (happening.driver < 0)
                continue;
            RunResult::DriverState& driver =
                result.drivers[static_cast<std::size_t>(happening.driver)];
            if (std::holds_alternative<Happening::Publish>(happening.what))
                ++driver.publishes;
            if (std::holds_alternative<Happening::Stop>(happening.what))
                driver.stopped = failed = true;
            if (std::holds_alternative<Happening::Exception>(happening.what))
                driver.threw = failed = true;
        }
        result.wentAsExpected = failed == config_.expectStop;
    }

    const Config& config_;
    const ScenarioPlayer::Options& options_;
    std::unique_ptr<RunClock> clock_;
    vplc::Plant plant_;
    Timeline timeline_;
    TimelineObserver observer_;
    BusWatch bus_;
    RestartHook restarts_;
    PlantModels plantModels_;
    HostRoutes routes_;
    std::vector<std::unique_ptr<HostedDriver>> drivers_;
    bool released_ = false;
    std::size_t nextStep_ = 0;
    std::size_t routed_ = 0;  // the timeline's happenings routed so far
    int64_t reported_ = 0;    // the last whole step of progress reported
};

}  // namespace

RunResult ScenarioPlayer::run(const Config& config, const DriverLibrary& library,
                              const Options& options) {
    return Run(config, library, options).play();
}

}  // namespace axlsim
