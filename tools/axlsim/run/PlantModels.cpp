// SPDX-License-Identifier: MIT
#include "axlsim/run/PlantModels.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "axlsim/base/Overloaded.h"
#include "axlsim/configuration/DriverNumber.h"
#include "axlsim/configuration/LoopNames.h"
#include "axlsim/run/ProcessData.h"
#include "modules/IbIlConversion.h"

namespace axlsim {

namespace {

using Time = PlantModels::Time;

// An analog sensor saturates at the ends of the IB IL range instead of wrapping.
constexpr double kHighestValue = 21.845;

double milliseconds(Time t) {
    return static_cast<double>(t.count()) / 1e6;
}

// The length of a square signal's "on" part: duty x period, to the nanosecond.
Time onTime(const Signal& signal) {
    const auto period = std::chrono::duration_cast<Time>(signal.period);
    return Time(std::llround(signal.duty * static_cast<double>(period.count())));
}

bool acting(const Signal& signal, Time t) {
    return t >= signal.from && (!signal.until || t < *signal.until);
}

// A signal's value at t (in its window): `on` is the square's state, the rest is the analog
// value.
double signalValue(const Signal& signal, Time t) {
    const Time since = t - std::chrono::duration_cast<Time>(signal.from);
    const Time period = signal.period;
    switch (signal.shape) {
        case Signal::Shape::Square:
            return since % period < onTime(signal) ? signal.high : signal.low;
        case Signal::Shape::Sine: {
            const double phase = milliseconds(since % period) / milliseconds(period);
            return (signal.low + signal.high) / 2.0 +
                   (signal.high - signal.low) / 2.0 * std::sin(2.0 * std::numbers::pi * phase);
        }
        case Signal::Shape::Ramp:
            break;
    }
    if (!signal.repeat && since >= period) {
        return signal.high;
    }
    const double part = milliseconds(since % period) / milliseconds(period);
    return signal.low + (signal.high - signal.low) * part;
}

uint16_t wordOf(double value) {
    return to_ib_il(static_cast<float>(std::clamp(value, 0.0, kHighestValue)));
}

}  // namespace

PlantModels::PlantModels(const Config& config, vplc::Station& station, Timeline& timeline)
    : config_(config), station_(station), timeline_(timeline) {
    for (std::size_t position = 1; position <= config.bus.size(); ++position) {
        outputs_.push_back(station.outputsOnBus(static_cast<int>(position)));
    }
}

PlantModels::~PlantModels() {
    station_.onInputCopy(nullptr);
}

void PlantModels::start() {
    std::lock_guard lock(mutex_);
    for (std::size_t i = 0; i < config_.plant.size(); ++i) {
        std::visit(Overloaded{
                       [&](const Wire& wire) { setDigital(i, wire.invert); },
                       [&](const Link& link) {
                           Lag& lag = lags_[i];
                           lag.target = link.gain * outputValue(link.from, outputs_) + link.offset;
                           lag.y0 = lag.target;
                       },
                       [&](const Signal& signal) {
                           if (signal.to.digital()) {
                               scheduleEdge(i, Time(-1));
                           }
                       },
                   },
                   config_.plant[i].model);
    }
    if (!lags_.empty() || std::any_of(config_.plant.begin(), config_.plant.end(),
                                      [](const PlantModel& m) { return !m.to().digital(); })) {
        station_.onInputCopy([this] { inputCopy(); });
    }
}

std::optional<Time> PlantModels::nextChange() const {
    std::lock_guard lock(mutex_);
    if (due_.empty()) {
        return std::nullopt;
    }
    return due_.begin()->first;
}

void PlantModels::actUntil(Time now) {
    std::lock_guard lock(mutex_);
    while (!due_.empty() && due_.begin()->first <= now) {
        const DigitalChange change = due_.begin()->second;
        const Time at = due_.begin()->first;
        due_.erase(due_.begin());
        setDigital(change.model, change.on);
        if (std::holds_alternative<Signal>(config_.plant[change.model].model)) {
            scheduleEdge(change.model, at);
        }
    }
}

void PlantModels::outputsCopied(Time now) {
    std::lock_guard lock(mutex_);
    std::vector<std::vector<uint8_t>> outputs;
    for (std::size_t position = 1; position <= config_.bus.size(); ++position) {
        outputs.push_back(station_.outputsOnBus(static_cast<int>(position)));
    }
    if (outputs == outputs_) {
        return;
    }
    for (std::size_t i = 0; i < config_.plant.size(); ++i) {
        if (const auto* wire = std::get_if<Wire>(&config_.plant[i].model)) {
            const bool was = outputValue(wire->from, outputs_) != 0.0;
            const bool is = outputValue(wire->from, outputs) != 0.0;
            if (was == is) {
                continue;
            }
            if (wire->delay.count() == 0) {
                setDigital(i, is != wire->invert);
            } else {
                due_.emplace(now + wire->delay, DigitalChange{i, is != wire->invert});
            }
        } else if (const auto* link = std::get_if<Link>(&config_.plant[i].model)) {
            const double was = outputValue(link->from, outputs_);
            const double is = outputValue(link->from, outputs);
            if (was != is) {
                lags_[i].pending.push_back(
                    Target{now + link->delay, link->gain * is + link->offset});
            }
        }
    }
    outputs_ = std::move(outputs);
}

std::size_t markShownMoves(const Config& config, std::vector<Happening>& timeline, bool complete) {
    std::map<std::pair<int, uint32_t>, Pin> channels;  // (driver, analog input id) -> channel
    for (std::size_t d = 0; d < config.drivers.size(); ++d) {
        const Config::Driver& driver = config.drivers[d];
        const auto number = driver.params.find("Consecutive Number");
        const int position =
            DriverNumber::read(number != driver.params.end() ? number->second : "").value();
        for (const auto& [key, service] : driver.services) {
            const auto pin = service.params.find("PinNum");
            if (service.type == "AnalogIn" && pin != service.params.end()) {
                channels[{static_cast<int>(d), service.eventId}] =
                    Pin{position, Pin::Kind::AnalogIn, DriverNumber::read(pin->second).value()};
            }
        }
    }
    std::set<Pin> published;  // channels published after the point reached, going backwards
    std::set<Pin> followed;   // channels published or moved after it
    std::size_t decided = timeline.size();
    for (std::size_t i = timeline.size(); i-- > 0;) {
        Happening& happening = timeline[i];
        if (const auto* publish = std::get_if<Happening::Publish>(&happening.what)) {
            const auto channel = channels.find({happening.driver, publish->id});
            if (channel != channels.end()) {
                published.insert(channel->second);
                followed.insert(channel->second);
            }
        } else if (auto* move = std::get_if<Happening::PlantMove>(&happening.what);
                   move != nullptr && !move->to.digital()) {
            if (!complete && followed.count(move->to) == 0) {
                decided = i;
            }
            move->shown = published.erase(move->to) > 0;
            followed.insert(move->to);
        }
    }
    return decided;
}

void PlantModels::inputCopy() {
    std::lock_guard lock(mutex_);
    const Time now = timeline_.now();
    for (std::size_t i = 0; i < config_.plant.size(); ++i) {
        const Pin& to = config_.plant[i].to();
        if (to.digital()) {
            continue;
        }
        const auto value = analogValue(i, now);
        if (!value) {
            continue;
        }
        const uint16_t word = wordOf(*value);
        if (analogWord(station_.inputsOnBus(to.position), to.index) == word) {
            continue;
        }
        station_.setAnalogInput(to.position, to.index, word);
        Happening::PlantMove move;
        move.to = to;
        move.value = word;
        move.shown = false;
        if (const auto* link = std::get_if<Link>(&config_.plant[i].model)) {
            move.model = "link";
            move.from = link->from;
        } else {
            move.model = "signal";
            move.shape = shapeName(std::get<Signal>(config_.plant[i].model).shape);
        }
        timeline_.add(-1, std::move(move));
    }
}

std::optional<double> PlantModels::analogValue(std::size_t model, Time now) {
    if (const auto* signal = std::get_if<Signal>(&config_.plant[model].model)) {
        if (!acting(*signal, now)) {
            return std::nullopt;
        }
        return signalValue(*signal, now);
    }
    return lagValue(model, lags_[model], now);
}

double PlantModels::lagValue(std::size_t model, Lag& lag, Time now) const {
    const Link& link = std::get<Link>(config_.plant[model].model);
    auto valueAt = [&link, &lag](Time t) {
        if (link.lag.count() == 0) {
            return lag.target;
        }
        const double ms = milliseconds(t - lag.t0);
        return lag.target +
               (lag.y0 - lag.target) * std::exp(-ms / static_cast<double>(link.lag.count()));
    };
    while (!lag.pending.empty() && lag.pending.front().from <= now) {
        const Target next = lag.pending.front();
        lag.pending.pop_front();
        lag.y0 = valueAt(next.from);
        lag.t0 = next.from;
        lag.target = next.value;
    }
    return valueAt(now);
}

double PlantModels::outputValue(const Pin& pin,
                                const std::vector<std::vector<uint8_t>>& outputs) const {
    const auto& data = outputs[static_cast<std::size_t>(pin.position - 1)];
    if (pin.digital()) {
        return digitalPin(data, pin.index) ? 1.0 : 0.0;
    }
    return static_cast<double>(from_ib_il(analogWord(data, pin.index)));
}

void PlantModels::setDigital(std::size_t model, bool on) {
    const PlantModel& source = config_.plant[model];
    const Pin& to = source.to();
    if (digitalPin(station_.inputsOnBus(to.position), to.index) == on) {
        return;
    }
    station_.setDigitalInput(to.position, to.index, on);
    Happening::PlantMove move;
    move.to = to;
    move.value = on ? 1 : 0;
    if (const auto* wire = std::get_if<Wire>(&source.model)) {
        move.model = "wire";
        move.from = wire->from;
    } else {
        move.model = "signal";
        move.shape = "square";
    }
    timeline_.add(-1, std::move(move));
}

// Queues the first edge of a digital square signal after `after`, within its window.
void PlantModels::scheduleEdge(std::size_t model, Time after) {
    const Signal& signal = std::get<Signal>(config_.plant[model].model);
    const Time from = signal.from;
    const Time period = signal.period;
    const Time on = onTime(signal);
    Time next = from;
    bool state = on.count() > 0;
    if (after >= from) {
        const Time start = from + (after - from) / period * period;
        if (after < start + on && on < period) {
            next = start + on;
            state = false;
        } else {
            next = start + period;
            state = on.count() > 0;
        }
        // A duty of 0 or 1 gives one state for ever: nothing follows the first edge.
        if (on.count() == 0 || on >= period) {
            return;
        }
    }
    if (signal.until && next >= *signal.until) {
        return;
    }
    due_.emplace(next, DigitalChange{model, state});
}

}  // namespace axlsim
