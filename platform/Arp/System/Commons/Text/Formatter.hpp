// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <type_traits>
#include <vector>

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp::System::Commons::Text {

// Builds texts from a format with the placeholders "{0}", "{1}", ...: each placeholder whose
// index names an argument is replaced by that argument's text; everything else, including a
// placeholder without an argument, is copied unchanged.
class ARP_SYSTEM_API Formatter {
public:
    template <class... Args>
    static String Format(const String& format, const Args&... args) {
        return FormatArguments(format, {ToText(args)...});
    }

    static String FormatArguments(const String& format, const std::vector<String>& arguments);

private:
    static String ToText(const String& text) { return text; }
    static String ToText(const char* text) { return text != nullptr ? String(text) : String(); }

    template <class T, std::enable_if_t<std::is_arithmetic_v<T>, int> = 0>
    static String ToText(T value) {
        return std::to_string(value);
    }
};

}  // namespace Arp::System::Commons::Text
