// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "axlsim/configuration/Config.h"

namespace axlsim::loopcheck {

// Judges the plant and host sections against the bus and the drivers' services: two models on
// one input and a route whose map does not fit its two ids make a configuration that `run`
// refuses; a route from an id that nothing publishes never fires, and one to an id that no
// output or restart service has stops the driver. `check` lists them all.

struct Finding {
    std::string path;  // "/plant/3", "/host/1"
    std::string subject;
    bool refusesRun = false;
    std::string problem;
    std::string consequence;
    std::string fix;
};

std::vector<Finding> check(const Config& config);

// Throws a ConfigError for the first finding that `run` refuses, if any.
void requireRunnable(const Config& config);

}  // namespace axlsim::loopcheck
