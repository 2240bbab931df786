// SPDX-License-Identifier: MIT
#include "axlsim/configuration/Milliseconds.h"

#include <algorithm>
#include <charconv>

namespace axlsim {

namespace {

bool decimalDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::string millisecondsRange() {
    return "from 0 to 10^12 ms (about 31 years)";
}

std::string millisecondsProblem(std::string_view text) {
    if (!decimalDigits(text)) {
        return std::string(text) +
               " is not a time: expected whole milliseconds in decimal digits, " +
               millisecondsRange();
    }
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > kLongestMilliseconds) {
        return std::string(text) + " ms is beyond the longest run, 10^12 ms (about 31 years)";
    }
    return "";
}

std::chrono::milliseconds readMilliseconds(std::string_view text) {
    int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return std::chrono::milliseconds(value);
}

}  // namespace axlsim
