// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace axlsim {

// A text with what a terminal would act on escaped, so that a text from a configuration or the
// driver shows on one line, as it is: the ASCII controls ("\n", "\t", "\r", else "\x00" to
// "\x1f" and "\x7f"), the C1 controls and the bidirectional marks, overrides and isolates
// ("\u009b", "\u202e"), and the bytes that are not UTF-8 ("\xff"). Other UTF-8 text stays.
std::string visible(std::string_view text);

// A text in double quotes, as messages show texts of the configuration and of the driver; its
// control characters escaped.
std::string inQuotes(std::string_view text);

// A text of the configuration as a message shows it: visible(), and cut to its first `characters`
// characters with its length when it is longer ("xx... (100000 characters)"), so that a value of
// any length makes a message of a few lines.
std::string shortText(std::string_view text, std::size_t characters = 60);

// The same in double quotes, the length after the closing quote.
std::string shortInQuotes(std::string_view text, std::size_t characters = 60);

// The shortest decimal text that reads back as exactly this float ("4.125", "0.1").
std::string floatText(float value);

// The shortest decimal text that reads back as exactly this double ("21.845", "0").
std::string numberText(double value);

// The double that this float's shortest text names, so that a JSON writer, which writes doubles,
// shows the float's own digits instead of those of its exact binary value.
double floatForJson(float value);

// The eight bits of a byte, most significant first ("00101000").
std::string bitsText(uint8_t byte);

// Virtual or wall time in milliseconds, with the fraction only when there is one ("302",
// "0.25").
std::string millisecondsText(std::chrono::nanoseconds t);

}  // namespace axlsim
