// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string_view>

namespace axlbench {

// Who makes the platform calls being measured: the driver, or the floor (a bare loop making
// exactly the same platform calls, with no driver logic around them).
enum class Side { Driver, Floor };

// The module at position 1 of the station, with a driver that configures every pin of it.
enum class ModuleKind {
    Digital,  // AXL F DI8/1 DO8/1: eight inputs, eight outputs
    Analog,   // AXL F AI2 AO2: two inputs, two outputs
};

// The output events measured.
enum class EventKind {
    Digital,  // one digital output pin (pin 3)
    Analog,   // one analog output channel (channel 1)
    TwoPins,  // one event id bound to two digital output pins (pins 6 and 7)
};

// Event ids of the fully configured drivers: inputs from 100 on, outputs from 200 on (pin n has
// 100 + n and 200 + n), except that digital output pins 6 and 7 share one id.
inline constexpr uint32_t kFirstInputId = 100;
inline constexpr uint32_t kFirstOutputId = 200;
inline constexpr uint32_t kSharedOutputId = 206;

inline constexpr std::string_view nameOf(Side side) {
    return side == Side::Driver ? "driver" : "floor";
}

inline constexpr ModuleKind moduleOf(EventKind kind) {
    return kind == EventKind::Analog ? ModuleKind::Analog : ModuleKind::Digital;
}

}  // namespace axlbench
