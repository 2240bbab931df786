// SPDX-License-Identifier: MIT
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "orbel/Recorder.h"

namespace hosting {

// One log line as a test states it: level, format and rendered text.
struct LoggedLine {
    int level = 0;
    std::string format;
    std::string text;

    bool operator==(const LoggedLine&) const = default;
};

std::ostream& operator<<(std::ostream& out, const LoggedLine& line);

// The version line that every construction logs.
inline constexpr const char* kVersionFormat =
    "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]";

// The log lines recorded so far, of every driver and of none; given a driver, only its lines (null:
// the lines of no driver).
std::vector<LoggedLine> loggedLines(const orbel::Recorder& recorder,
                                    orbel::Recorder::DriverFilter driver = std::nullopt);

// Every line recorded so far except the version lines.
std::vector<LoggedLine> linesAfterVersion(const orbel::Recorder& recorder);

}  // namespace hosting
