// SPDX-License-Identifier: MIT
#include "axlsim/base/ValueText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "axlsim/base/Hex.h"

namespace axlsim {

namespace {

// The length of the UTF-8 sequence that a lead byte starts, and the range its second byte must
// be in (which rules out overlong forms, surrogates and code points beyond U+10FFFF); 0 for a
// byte that cannot start one.
struct Lead {
    int length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xbf;
};

// The lead bytes by range, as the UTF-8 table has them.
struct LeadRange {
    unsigned char first;
    unsigned char last;
    Lead lead;
};
constexpr std::array<LeadRange, 8> kLeadRanges{{
    {0xc2, 0xdf, {2}},
    {0xe0, 0xe0, {3, 0xa0}},
    {0xe1, 0xec, {3}},
    {0xed, 0xed, {3, 0x80, 0x9f}},
    {0xee, 0xef, {3}},
    {0xf0, 0xf0, {4, 0x90}},
    {0xf1, 0xf3, {4}},
    {0xf4, 0xf4, {4, 0x80, 0x8f}},
}};

Lead leadOf(unsigned char byte) {
    for (const LeadRange& range : kLeadRanges) {
        if (byte >= range.first && byte <= range.last) {
            return range.lead;
        }
    }
    return {};
}

// A byte that continues a UTF-8 sequence rather than starting a character.
bool continues(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// The length of the valid UTF-8 sequence at the start of `text`, 0 when it is not one.
std::size_t sequenceLength(std::string_view text) {
    const Lead lead = leadOf(static_cast<unsigned char>(text[0]));
    if (lead.length == 0 || text.size() < static_cast<std::size_t>(lead.length)) {
        return 0;
    }
    const auto second = static_cast<unsigned char>(text[1]);
    if (second < lead.low || second > lead.high) {
        return 0;
    }
    for (int i = 2; i < lead.length; ++i) {
        if (!continues(text[static_cast<std::size_t>(i)])) {
            return 0;
        }
    }
    return static_cast<std::size_t>(lead.length);
}

char32_t codePoint(std::string_view sequence) {
    static constexpr std::array<unsigned char, 5> kLeadBits{0, 0x7f, 0x1f, 0x0f, 0x07};
    char32_t point = static_cast<unsigned char>(sequence[0]) & kLeadBits[sequence.size()];
    for (std::size_t i = 1; i < sequence.size(); ++i) {
        point = (point << 6) | (static_cast<unsigned char>(sequence[i]) & 0x3f);
    }
    return point;
}

// Code points that a terminal takes as commands rather than text: the C1 controls (U+009B starts
// an escape sequence as ESC [ does), the marks, embeddings, overrides and isolates that reorder
// the text around them, and the line and paragraph separators.
bool actsOnTheTerminal(char32_t point) {
    return (point >= 0x80 && point <= 0x9f) || point == 0x061c || point == 0x200e ||
           point == 0x200f || (point >= 0x2028 && point <= 0x202e) ||
           (point >= 0x2066 && point <= 0x2069);
}

std::string byteEscaped(unsigned char byte) {
    return "\\x" + toHex(std::span<const uint8_t>(&byte, 1));
}

// Characters as a reader counts them: UTF-8 sequences count once.
std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !continues(c); }));
}

// The first `shown` characters, not cutting a UTF-8 sequence, when there are more.
std::string_view head(std::string_view text, std::size_t shown) {
    std::size_t end = 0;
    for (std::size_t counted = 0; end < text.size(); ++end) {
        if (!continues(text[end]) && counted++ == shown) {
            break;
        }
    }
    return text.substr(0, end);
}

std::string lengthOf(std::string_view text) {
    return " (" + std::to_string(characterCount(text)) + " characters)";
}

}  // namespace

std::string visible(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80) {
            const std::size_t length = sequenceLength(text.substr(i));
            if (length == 0) {
                shown += byteEscaped(byte);
                ++i;
                continue;
            }
            const std::string_view sequence = text.substr(i, length);
            if (const char32_t point = codePoint(sequence); actsOnTheTerminal(point)) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(point));
                shown += escaped;
            } else {
                shown += sequence;
            }
            i += length;
            continue;
        }
        if (byte >= 0x20 && byte != 0x7f) {
            shown += c;
        } else if (c == '\n') {
            shown += "\\n";
        } else if (c == '\t') {
            shown += "\\t";
        } else if (c == '\r') {
            shown += "\\r";
        } else {
            shown += byteEscaped(byte);
        }
        ++i;
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

std::string shortText(std::string_view text, std::size_t characters) {
    const std::string_view shown = head(text, characters);
    return shown.size() == text.size() ? visible(text) : visible(shown) + "..." + lengthOf(text);
}

std::string shortInQuotes(std::string_view text, std::size_t characters) {
    const std::string_view shown = head(text, characters);
    return shown.size() == text.size() ? inQuotes(text)
                                       : "\"" + visible(shown) + "...\"" + lengthOf(text);
}

}  // namespace axlsim
