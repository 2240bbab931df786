#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "orbel/Recorder.h"

namespace drivertest {

// One log line as a test states it: level, format and rendered text.
struct Logged {
    int level = 0;
    std::string format;
    std::string text;

    bool operator==(const Logged&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Logged& line) {
    return out << "{" << line.level << ", \"" << line.format << "\", \"" << line.text << "\"}";
}

// The log lines recorded so far, of every driver and of none.
inline std::vector<Logged> loggedLines(const orbel::Recorder& recorder) {
    std::vector<Logged> lines;
    for (const orbel::LogLine& line : recorder.logs()) {
        lines.push_back({line.level, line.format, line.text});
    }
    return lines;
}

}  // namespace drivertest
