// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/RunResult.h"
#include "hosting/DriverLibrary.h"

namespace axlsimtest {

// A driver of the analog module at position 2, behind the digital module at position 1: channel 0
// publishes event 300, event 310 drives output 0. An element of "drivers".
inline constexpr const char* kAnalogDriverAtPosition2 =
    R"({ "driver": { "deviceType": "AXL_F_AI2_AO2", "params": { "Consecutive Number": "2" } },
          "mappings": { "300": { "size": 4 }, "310": { "size": 4 } },
          "services": { "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "0" } },
                        "2": { "eventId": 310, "type": "AnalogOut", "params": { "PinNum": "0", "InitVal": "0" } } } })";

// The driver library built with the tests, loaded once per process.
const hosting::DriverLibrary& driverLibrary();

// A configuration from its JSON text.
axlsim::Config configFrom(const std::string& json);

// Plays a configuration on the virtual clock with the real driver.
axlsim::RunResult play(const axlsim::Config& config);

// The first stop or exception of a driver in a run, described as ConfigCheck describes one.
struct Failure {
    std::string where;  // "create", "initialize", "event" for an exception; "" for a stop
    std::string stopMessage;
    std::optional<uint32_t> stopEventId;
    std::string exceptionType;
    std::string exceptionWhat;
    std::string logBefore;  // the driver's last log line before a stop, if any
};
std::optional<Failure> firstFailure(const axlsim::RunResult& result, int driver);

// Every happening of one kind in a run, in the order of the timeline.
template <class Kind>
struct Found {
    std::chrono::nanoseconds t;
    int driver;
    Kind what;
};

template <class Kind>
std::vector<Found<Kind>> happeningsOf(const axlsim::RunResult& run) {
    std::vector<Found<Kind>> found;
    for (const axlsim::Happening& happening : run.timeline) {
        if (const auto* what = std::get_if<Kind>(&happening.what)) {
            found.push_back({happening.t, happening.driver, *what});
        }
    }
    return found;
}

// The JSON timeline of a run.
std::string jsonTimeline(const axlsim::Config& config, const axlsim::RunResult& result);

}  // namespace axlsimtest
