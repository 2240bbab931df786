// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "axlsim/configuration/LoopConfig.h"

namespace axlsim {

// A signal's shapes and a route's maps by the names a configuration gives them ("square",
// "invert"): read from the file, and shown in timelines and messages.
std::optional<Signal::Shape> shapeFromName(std::string_view name);
std::string_view shapeName(Signal::Shape shape);
std::optional<Route::Map> mapFromName(std::string_view name);
std::string_view mapName(Route::Map map);

}  // namespace axlsim
