// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/configuration/EventCatalog.h"

namespace axlsim {

// The host section at work: the function blocks of the host runtime, reduced to routes. Each
// publication of a driver goes through the routes from its id, in the order of the list; a
// route that fires makes an event for a driver, due `delay` after the publication.
class HostRoutes {
public:
    using Time = std::chrono::nanoseconds;

    struct Delivery {
        Time due{0};
        std::size_t route = 0;  // index into the host section
        Config::Event event;
    };

    explicit HostRoutes(const Config& config);

    bool empty() const { return config_.host.empty(); }

    void published(int driver, uint32_t id, std::span<const uint8_t> payload, Time t);

    std::optional<Time> nextDelivery() const;

    // The deliveries due at or before `now`, by due time and then in the order of the
    // publications and routes that made them.
    std::vector<Delivery> takeDue(Time now);

private:
    std::optional<std::vector<uint8_t>> payloadOf(std::size_t index,
                                                  const EventCatalog::Value& value);

    const Config& config_;
    EventCatalog catalog_;
    std::multimap<Time, Delivery> queue_;
    std::vector<std::optional<std::vector<uint8_t>>> lastSent_;  // by route
    std::vector<bool> switchedOn_;                               // by route: above, below
};

}  // namespace axlsim
