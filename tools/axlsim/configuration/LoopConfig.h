// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "axlsim/configuration/Pin.h"

namespace axlsim {

// The plant section: models of the wiring that react to what the driver writes to the bus.

// A digital output that comes back on a digital input, delay later.
struct Wire {
    Pin from;
    Pin to;
    std::chrono::milliseconds delay{0};
    bool invert = false;
};

// An analog input that follows gain * x + offset of an output x (an analog channel in the
// engineering unit, or a digital pin as 0.0 or 1.0) with a first-order lag, after a dead time.
struct Link {
    Pin from;
    Pin to;
    double gain = 1.0;
    double offset = 0.0;
    std::chrono::milliseconds lag{0};
    std::chrono::milliseconds delay{0};
};

// A generator on an input, acting from `from` until `until`.
struct Signal {
    enum class Shape { Square, Sine, Ramp };

    Pin to;
    Shape shape = Shape::Square;
    double low = 0.0;
    double high = 10.0;
    std::chrono::milliseconds period{0};
    double duty = 0.5;
    std::chrono::milliseconds from{0};
    std::optional<std::chrono::milliseconds> until;
    bool repeat = false;
};

struct PlantModel {
    std::variant<Wire, Link, Signal> model;
    std::string path;  // "/plant/2"

    const Pin& to() const {
        return std::visit([](const auto& m) -> const Pin& { return m.to; }, model);
    }
};

// The host section: a route turns a publication of one driver into an event for a driver.
struct Route {
    enum class Map { Copy, Invert, Above, Below, Scale };

    int fromDriver = 0;
    uint32_t from = 0;
    int toDriver = 0;
    uint32_t to = 0;
    Map map = Map::Copy;
    double threshold = 0.0;
    double hysteresis = 0.0;
    double gain = 1.0;
    double offset = 0.0;
    std::chrono::milliseconds delay{0};
    bool onChange = false;
    std::string path;  // "/host/0"
};

}  // namespace axlsim
