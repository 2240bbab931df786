// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace axlsim {

// Parses a configuration's JSON text (comments allowed) strictly: a syntax error names the line
// and column and shows only the start of what was last read, and a key given twice in one object
// is an error that names the key, its JSON pointer and the lines of both places, instead of the
// later one silently replacing the earlier.
class JsonParser {
public:
    // Throws ConfigError, naming `file`.
    static nlohmann::json parse(const std::string& text, const std::string& file);

    // The JSON pointer of a member or an element of the value at `path` ("" is the root).
    static std::string member(const std::string& path, std::string_view key);
    static std::string element(const std::string& path, std::size_t index);
};

}  // namespace axlsim
