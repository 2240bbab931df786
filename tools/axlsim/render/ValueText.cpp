// SPDX-License-Identifier: MIT
#include "axlsim/render/ValueText.h"

#include <charconv>
#include <cstdlib>
#include <string>

#include "axlsim/configuration/Hex.h"

namespace axlsim {

std::string visible(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7f) {
            shown += c;
        } else if (c == '\n') {
            shown += "\\n";
        } else if (c == '\t') {
            shown += "\\t";
        } else if (c == '\r') {
            shown += "\\r";
        } else {
            shown += "\\x" + toHex(std::span<const uint8_t>(&byte, 1));
        }
    }
    return shown;
}

std::string inQuotes(std::string_view text) {
    return "\"" + visible(text) + "\"";
}

std::string floatText(float value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

std::string numberText(double value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

double floatForJson(float value) {
    return std::strtod(floatText(value).c_str(), nullptr);
}

std::string bitsText(uint8_t byte) {
    std::string bits;
    for (int bit = 7; bit >= 0; --bit) {
        bits += ((byte >> bit) & 1) != 0 ? '1' : '0';
    }
    return bits;
}

std::string millisecondsText(std::chrono::nanoseconds t) {
    constexpr int64_t kNanosecondsPerMillisecond = 1000000;
    const int64_t ns = t.count();
    if (ns % kNanosecondsPerMillisecond == 0) {
        return std::to_string(ns / kNanosecondsPerMillisecond);
    }
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text,
                                      static_cast<double>(ns) / kNanosecondsPerMillisecond);
    return std::string(text, result.ptr);
}

}  // namespace axlsim
