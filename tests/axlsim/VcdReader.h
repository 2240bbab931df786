// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace axlsimtest {

// Reads a Value Change Dump back: its variables with their scope path, and every value change
// with its time. Throws std::runtime_error for a dump that a viewer could not read: a change of
// an undeclared variable, a time that goes back, a malformed line.
class VcdReader {
public:
    struct Variable {
        std::string type;
        int width = 0;
        std::string path;  // scopes and name, joined by dots: "axlsim.events.ev100"
    };
    struct Change {
        int64_t time = 0;
        std::string path;
        std::string value;  // "0", "1", "x", "b0101", "r4.125"
        bool operator==(const Change&) const = default;
    };

    explicit VcdReader(const std::string& text);

    const std::string& timescale() const { return timescale_; }
    const std::vector<Variable>& variables() const { return variables_; }
    std::vector<Change> changesOf(const std::string& path) const;
    const Variable* variable(const std::string& path) const;

private:
    std::string timescale_;
    std::vector<Variable> variables_;
    std::vector<Change> changes_;
};

}  // namespace axlsimtest
