// SPDX-License-Identifier: MIT
#include "hosting/LoggedLine.h"

namespace hosting {

std::ostream& operator<<(std::ostream& out, const LoggedLine& line) {
    return out << "{" << line.level << ", \"" << line.format << "\", \"" << line.text << "\"}";
}

std::vector<LoggedLine> loggedLines(const orbel::Recorder& recorder,
                                    orbel::Recorder::DriverFilter driver) {
    std::vector<LoggedLine> lines;
    for (const orbel::LogLine& line : recorder.logs(driver)) {
        lines.push_back({line.level, line.format, line.text});
    }
    return lines;
}

std::vector<LoggedLine> linesAfterVersion(const orbel::Recorder& recorder) {
    std::vector<LoggedLine> lines;
    for (LoggedLine& line : loggedLines(recorder)) {
        if (line.format != kVersionFormat) {
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

}  // namespace hosting
