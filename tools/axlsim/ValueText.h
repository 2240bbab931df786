#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace axlsim {

// A text in double quotes, as messages show texts of the configuration and of the driver.
std::string inQuotes(std::string_view text);

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
