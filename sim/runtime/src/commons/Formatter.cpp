// SPDX-License-Identifier: MIT
#include "Arp/System/Commons/Text/Formatter.hpp"

#include <charconv>
#include <optional>
#include <string_view>

namespace Arp::System::Commons::Text {

namespace {

// The index written between the braces of a placeholder: decimal digits only.
std::optional<std::size_t> placeholderIndex(std::string_view digits) {
    std::size_t index = 0;
    const char* end = digits.data() + digits.size();
    auto [stop, error] = std::from_chars(digits.data(), end, index);
    if (digits.empty() || error != std::errc{} || stop != end) {
        return std::nullopt;
    }
    return index;
}

}  // namespace

String Formatter::FormatArguments(const String& format, const std::vector<String>& arguments) {
    String text;
    std::size_t position = 0;
    while (position < format.size()) {
        std::size_t open = format.find('{', position);
        if (open == String::npos) {
            text.append(format, position);
            break;
        }
        text.append(format, position, open - position);
        std::size_t close = format.find('}', open + 1);
        std::optional<std::size_t> index;
        if (close != String::npos) {
            index = placeholderIndex(std::string_view(format).substr(open + 1, close - open - 1));
        }
        if (!index || *index >= arguments.size()) {
            text += '{';
            position = open + 1;
            continue;
        }
        text += arguments[*index];
        position = close + 1;
    }
    return text;
}

}  // namespace Arp::System::Commons::Text
