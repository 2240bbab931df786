// SPDX-License-Identifier: MIT
#include "axlsim/configuration/Pin.h"

#include <array>
#include <charconv>
#include <utility>

namespace axlsim {

namespace {

constexpr std::array<std::pair<std::string_view, Pin::Kind>, 4> kKinds{{
    {"DI", Pin::Kind::DigitalIn},
    {"DO", Pin::Kind::DigitalOut},
    {"AI", Pin::Kind::AnalogIn},
    {"AO", Pin::Kind::AnalogOut},
}};

// A whole decimal number of one to three digits, and nothing else.
std::optional<int> smallNumber(std::string_view text) {
    if (text.empty() || text.size() > 3) {
        return std::nullopt;
    }
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.front() == '-' ||
        text.front() == '+') {
        return std::nullopt;
    }
    return value;
}

}  // namespace

std::optional<Pin> Pin::parse(std::string_view name) {
    const auto dot = name.find('.');
    if (dot == std::string_view::npos || name.size() < dot + 3) {
        return std::nullopt;
    }
    const auto position = smallNumber(name.substr(0, dot));
    const auto index = smallNumber(name.substr(dot + 3));
    const std::string_view kind = name.substr(dot + 1, 2);
    if (!position || !index) {
        return std::nullopt;
    }
    for (const auto& [text, value] : kKinds) {
        if (text == kind) {
            return Pin{*position, value, *index};
        }
    }
    return std::nullopt;
}

std::string Pin::name() const {
    for (const auto& [text, value] : kKinds) {
        if (value == kind) {
            return std::to_string(position) + "." + std::string(text) + std::to_string(index);
        }
    }
    return std::to_string(position) + ".?" + std::to_string(index);
}

}  // namespace axlsim
