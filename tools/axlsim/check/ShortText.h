// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace axlsim {

// A text of the configuration as `check` shows it in a message: its control characters escaped,
// and cut to its first 60 characters with its length when it is longer ("xx... (100000
// characters)"), so that a value of any length makes a message of a few lines.
std::string shortText(std::string_view text);

// The same in double quotes, the length after the closing quote.
std::string shortInQuotes(std::string_view text);

}  // namespace axlsim
