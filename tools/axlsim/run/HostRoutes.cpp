// SPDX-License-Identifier: MIT
#include "axlsim/run/HostRoutes.h"

#include "hosting/FloatBytes.h"

#include "axlsim/configuration/RouteFit.h"

namespace axlsim {

using hosting::floatBytes;

namespace {

using Receiver = EventCatalog::Receiver;

double numberOf(const EventCatalog::Value& value) {
    if (const auto* byte = std::get_if<uint8_t>(&value)) {
        return *byte != 0 ? 1.0 : 0.0;
    }
    return static_cast<double>(std::get<float>(value));
}

}  // namespace

HostRoutes::HostRoutes(const Config& config)
    : config_(config),
      catalog_(config.drivers),
      lastSent_(config.host.size()),
      switchedOn_(config.host.size(), false) {}

void HostRoutes::published(int driver, uint32_t id, std::span<const uint8_t> payload, Time t) {
    for (std::size_t i = 0; i < config_.host.size(); ++i) {
        const Route& route = config_.host[i];
        if (route.fromDriver != driver || route.from != id) {
            continue;
        }
        const auto value = catalog_.publishedValue(driver, id, payload);
        if (!value) {
            continue;
        }
        auto bytes = payloadOf(i, *value);
        if (!bytes || (route.onChange && lastSent_[i] == bytes)) {
            continue;
        }
        lastSent_[i] = bytes;
        Config::Event event;
        event.driver = route.toDriver;
        event.id = route.to;
        const auto& mappings = config_.drivers[static_cast<std::size_t>(route.toDriver)].mappings;
        const auto mapping = mappings.find(route.to);
        event.size =
            mapping != mappings.end() ? mapping->second : static_cast<uint32_t>(bytes->size());
        event.payload = std::move(bytes);
        const Time due = t + route.delay;
        queue_.emplace(due, Delivery{due, i, std::move(event)});
    }
}

std::optional<std::vector<uint8_t>> HostRoutes::payloadOf(std::size_t index,
                                                          const EventCatalog::Value& value) {
    const Route& route = config_.host[index];
    const Receiver receiver = catalog_.receiverOf(route.toDriver, route.to);
    const bool digital = std::holds_alternative<uint8_t>(value);
    if (!routeMapFits(route.map, digital, receiver)) {
        return std::nullopt;
    }
    const double x = numberOf(value);
    double result = x;
    switch (route.map) {
        case Route::Map::Copy:
            break;
        case Route::Map::Invert:
            result = x != 0.0 ? 0.0 : 1.0;
            break;
        case Route::Map::Above:
        case Route::Map::Below: {
            const bool above = route.map == Route::Map::Above;
            const bool beyond = above ? x > route.threshold : x < route.threshold;
            const bool back = above ? x < route.threshold - route.hysteresis
                                    : x > route.threshold + route.hysteresis;
            if (route.hysteresis == 0.0) {
                switchedOn_[index] = beyond;
            } else if (beyond) {
                switchedOn_[index] = true;
            } else if (back) {
                switchedOn_[index] = false;
            }
            result = switchedOn_[index] ? 1.0 : 0.0;
            break;
        }
        case Route::Map::Scale:
            result = route.gain * x + route.offset;
            break;
    }
    switch (receiver) {
        case Receiver::Analog:
            if (route.map == Route::Map::Copy) {
                if (const auto* f = std::get_if<float>(&value)) {
                    return floatBytes(*f);
                }
            }
            return floatBytes(static_cast<float>(result));
        case Receiver::Restart:
            return std::vector<uint8_t>{0};
        case Receiver::Digital:
            if (route.map == Route::Map::Copy) {
                return std::vector<uint8_t>{std::get<uint8_t>(value)};
            }
            break;
        case Receiver::None:
            // The driver will refuse it whatever it carries; the source's own bytes go.
            if (const auto* byte = std::get_if<uint8_t>(&value)) {
                return std::vector<uint8_t>{*byte};
            }
            return floatBytes(std::get<float>(value));
    }
    return std::vector<uint8_t>{static_cast<uint8_t>(result != 0.0 ? 1 : 0)};
}

std::optional<HostRoutes::Time> HostRoutes::nextDelivery() const {
    if (queue_.empty()) {
        return std::nullopt;
    }
    return queue_.begin()->first;
}

std::vector<HostRoutes::Delivery> HostRoutes::takeDue(Time now) {
    std::vector<Delivery> due;
    while (!queue_.empty() && queue_.begin()->first <= now) {
        due.push_back(std::move(queue_.begin()->second));
        queue_.erase(queue_.begin());
    }
    return due;
}

}  // namespace axlsim
