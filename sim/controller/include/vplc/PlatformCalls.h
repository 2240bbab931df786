// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vplc/Fault.h"

namespace vplc {

// Every entry point of the virtual controller's platform interfaces reports itself here by its C
// (or C++) function name, so that tests can count calls and make any of them fail. The counts and
// faults are process-wide; building a Station starts them afresh, destroying it clears the faults.

// Counts one call of `function`. When a fault injected for it is due, consumes it, sets its text
// as the calling thread's last error and returns that text: the call must then fail. Otherwise
// returns nothing and the call goes ahead.
std::optional<std::string> platformCall(std::string_view function);

// Sets the calling thread's last error text, which ArpPlc_GetLastError hands out.
void setLastError(std::string_view text);

int calls(std::string_view function);

// A second fault for the same function replaces the first.
void inject(std::string_view function, Fault fault);
void clearFaults();
void resetCallCounts();

}  // namespace vplc
