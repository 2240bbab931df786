// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace axlsim {

// A pin of a module's terminal as the plant and host sections name it: the bus position, the
// kind and the pin or channel number, "1.DI0", "1.DO7", "2.AI1", "2.AO0".
struct Pin {
    enum class Kind { DigitalIn, DigitalOut, AnalogIn, AnalogOut };

    int position = 1;
    Kind kind = Kind::DigitalIn;
    int index = 0;

    // The pin a name stands for, judged by its form only (not by the bus).
    static std::optional<Pin> parse(std::string_view name);

    std::string name() const;
    bool digital() const { return kind == Kind::DigitalIn || kind == Kind::DigitalOut; }
    bool input() const { return kind == Kind::DigitalIn || kind == Kind::AnalogIn; }

    auto operator<=>(const Pin&) const = default;
};

}  // namespace axlsim
