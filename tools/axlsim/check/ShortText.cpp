// SPDX-License-Identifier: MIT
#include "axlsim/check/ShortText.h"

#include <algorithm>

#include "axlsim/render/ValueText.h"

namespace axlsim {

namespace {

constexpr std::size_t kShown = 60;

bool continues(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

// Characters as a reader counts them: UTF-8 sequences count once.
std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !continues(c); }));
}

// The first kShown characters, not cutting a UTF-8 sequence, when there are more.
std::string_view head(std::string_view text) {
    std::size_t end = 0;
    for (std::size_t counted = 0; end < text.size(); ++end) {
        if (!continues(text[end]) && counted++ == kShown) {
            break;
        }
    }
    return text.substr(0, end);
}

std::string lengthOf(std::string_view text) {
    return " (" + std::to_string(characters(text)) + " characters)";
}

}  // namespace

std::string shortText(std::string_view text) {
    const std::string_view shown = head(text);
    return shown.size() == text.size() ? visible(text) : visible(shown) + "..." + lengthOf(text);
}

std::string shortInQuotes(std::string_view text) {
    const std::string_view shown = head(text);
    return shown.size() == text.size() ? inQuotes(text)
                                       : "\"" + visible(shown) + "...\"" + lengthOf(text);
}

}  // namespace axlsim
