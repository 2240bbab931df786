// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace axlsim {

// Times of a run, on the command line and in the configuration: whole milliseconds from 0 to the
// longest run, whose nanoseconds the virtual clock still holds. The one place that reads a time
// written as text.
inline constexpr int64_t kLongestMilliseconds = 1'000'000'000'000;  // 10^12 ms

// "from 0 to 10^12 ms (about 31 years)"
std::string millisecondsRange();

// Why a text is no time (empty when it is one): only decimal digits are read, so "010" is ten
// milliseconds and "0x10", "-5", "1e3" and "inf" are refused.
std::string millisecondsProblem(std::string_view text);

// The time a text names; call only for a text without a problem.
std::chrono::milliseconds readMilliseconds(std::string_view text);

}  // namespace axlsim
