// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace axlsim::jsonparser {

// Parses a configuration's JSON text (comments allowed) strictly: a syntax error names the line
// and column and shows only the start of what was last read, and a key given twice in one object
// is an error that names the key, its JSON pointer and the lines of both places, instead of the
// later one silently replacing the earlier. A number out of the range of a double, a comment
// without its end and nesting too deep are named by the line and column where they start.

// Throws ConfigError, naming `file`. Reads in time and memory linear in the text; objects
// and lists nested deeper than 256 levels are refused.
nlohmann::json parse(const std::string& text, const std::string& file);

// The line on which the key at `pointer` (a member of an object) is first given in a text
// that parse() has read, if it is there. Reads the text again: for a message, not per key.
std::optional<std::size_t> keyLine(const std::string& text, const std::string& pointer);

// The JSON pointer of a member or an element of the value at `path` ("" is the root).
std::string member(const std::string& path, std::string_view key);
std::string element(const std::string& path, std::size_t index);

}  // namespace axlsim::jsonparser
