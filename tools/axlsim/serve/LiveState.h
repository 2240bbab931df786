// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/run/Happening.h"
#include "vplc/Station.h"

namespace axlsim {

// What the live page shows beside the bus: each driver's state and each service's last value,
// kept up to date from the happenings as they come, and the whole of it as GET /api/state
// answers it.
class LiveState {
public:
    struct Clock {
        std::chrono::nanoseconds now{0};
        bool paused = false;
        double speed = 1.0;
        bool maxSpeed = false;
    };

    explicit LiveState(const Config& config);

    void saw(const Happening& happening);

    // The state, with the bus read from `station` as it stands.
    nlohmann::ordered_json render(const Clock& clock, const vplc::Station& station) const;

private:
    struct DriverState {
        bool stopped = false;
        std::string message;
    };

    // The value an event's payload stands for at a service of the driver, if it can be shown.
    nlohmann::ordered_json lastValue(int driver, const Config::Service& service) const;

    const Config& config_;
    EventCatalog catalog_;
    std::vector<DriverState> drivers_;
    // By driver and event id: the last payload published, and the last received.
    std::map<std::pair<int, uint32_t>, std::vector<uint8_t>> published_;
    std::map<std::pair<int, uint32_t>, std::vector<uint8_t>> received_;
    int restarts_ = 0;
};

}  // namespace axlsim
