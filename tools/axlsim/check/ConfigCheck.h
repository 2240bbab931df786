// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "axlsim/base/CaughtException.h"
#include "axlsim/configuration/Config.h"

namespace axlsim::configcheck {

// What a finding does to the driver.
enum class Effect {
    Stops,   // the driver calls stopWithError
    Throws,  // an exception leaves the driver
    Differs  // the driver goes on, but does something else than the configuration shows
};

// One problem of a configuration, as the driver meets it.
struct Finding {
    int driver = 0;
    std::optional<unsigned> serviceKey;           // the service the finding is about, if any
    std::optional<std::chrono::milliseconds> at;  // for a scenario event: its time
    Effect effect = Effect::Differs;
    std::string where;        // "create", "initialize" or "event": the host call it happens in
    std::string problem;      // what is wrong, in the terms of the configuration
    std::string log;          // the log line the driver writes for it, if any
    std::string stopMessage;  // Stops: the message
    std::optional<uint32_t> stopEventId;       // Stops: nEventId of the service passed
    std::optional<CaughtException> exception;  // Throws
    std::string consequence;                   // Differs: what the driver does instead
    std::string fix;
};

// Predicts, without running it, what the driver will do with a configuration: every setting it
// refuses (with its exact log line, stop message or exception), every setting it reads
// differently from how it is written, and how to fix each. Problems are listed all at once, each
// as if the others were fixed; firstFailure() tells which one the driver meets first.
//
// The checks of each concern are in the files named after it: ModuleCheck, ServiceCheck,
// PinCheck, MappingCheck, KeyCheck, NumberCheck and EventCheck.
std::vector<Finding> check(const Config& config);

// The first finding that stops the driver or throws, in the order the driver meets them:
// creation, then the services in key order, then the scenario's events in time order.
std::optional<Finding> firstFailure(const std::vector<Finding>& findings, int driver);

}  // namespace axlsim::configcheck
