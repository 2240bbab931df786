// SPDX-License-Identifier: MIT
#pragma once

#include <cstdarg>
#include <string>

namespace orbel {

// Renders a printf format with its arguments, safely. Conversions are taken as printf takes
// them, with one exception: "&d" (a misspelt "%d") consumes an int argument and shows its
// value, so that the formats that contain it still give "%s" the text argument meant for it.
std::string renderLogLine(const char* format, va_list args);

// The same for the arguments that follow the format: a line as the host renders it.
std::string logLineOf(const char* format, ...);

}  // namespace orbel
