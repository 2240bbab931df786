#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "orbel/Recorder.h"

namespace reliability {

// One log line as a test states it: level, format and rendered text.
struct LoggedLine {
    int level = 0;
    std::string format;
    std::string text;

    bool operator==(const LoggedLine&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const LoggedLine& line) {
    return out << "{" << line.level << ", \"" << line.format << "\", \"" << line.text << "\"}";
}

// The version line that every construction logs.
inline constexpr const char* kVersionFormat =
    "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]";

// Every line recorded so far except the version lines.
inline std::vector<LoggedLine> linesAfterVersion(const orbel::Recorder& recorder) {
    std::vector<LoggedLine> lines;
    for (const orbel::LogLine& line : recorder.logs()) {
        if (line.format != kVersionFormat) {
            lines.push_back({line.level, line.format, line.text});
        }
    }
    return lines;
}

}  // namespace reliability
