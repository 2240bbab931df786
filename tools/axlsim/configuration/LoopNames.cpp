// SPDX-License-Identifier: MIT
#include "axlsim/configuration/LoopNames.h"

#include <array>
#include <utility>

namespace axlsim {

namespace {

template <class Value, std::size_t N>
std::optional<Value> valueNamed(const std::array<std::pair<std::string_view, Value>, N>& names,
                                std::string_view name) {
    for (const auto& [known, value] : names) {
        if (known == name) {
            return value;
        }
    }
    return std::nullopt;
}

// Every value is in its table, so the lookup always finds one.
template <class Value, std::size_t N>
std::string_view nameOf(const std::array<std::pair<std::string_view, Value>, N>& names,
                        Value value) {
    for (const auto& [name, known] : names) {
        if (known == value) {
            return name;
        }
    }
    return names.front().first;
}

constexpr std::array<std::pair<std::string_view, Signal::Shape>, 3> kShapes{{
    {"square", Signal::Shape::Square},
    {"sine", Signal::Shape::Sine},
    {"ramp", Signal::Shape::Ramp},
}};

constexpr std::array<std::pair<std::string_view, Route::Map>, 5> kMaps{{
    {"copy", Route::Map::Copy},
    {"invert", Route::Map::Invert},
    {"above", Route::Map::Above},
    {"below", Route::Map::Below},
    {"scale", Route::Map::Scale},
}};

}  // namespace

std::optional<Signal::Shape> shapeFromName(std::string_view name) {
    return valueNamed(kShapes, name);
}

std::string_view shapeName(Signal::Shape shape) {
    return nameOf(kShapes, shape);
}

std::optional<Route::Map> mapFromName(std::string_view name) {
    return valueNamed(kMaps, name);
}

std::string_view mapName(Route::Map map) {
    return nameOf(kMaps, map);
}

}  // namespace axlsim
