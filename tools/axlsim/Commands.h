// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#if AXLSIM_SERVE
#include "axlsim/serve/ServeCommand.h"
#endif

namespace axlsim::commands {

// The three commands of axlsim. Each returns the program's exit status.

struct RunRequest {
    std::string config;
    bool json = false;
    std::string vcd;   // empty: no dump
    std::string html;  // empty: no report
    bool realTime = false;
    std::string driver;  // empty: the driver beside the program
    std::optional<std::chrono::milliseconds> until;
};

// 0: the run went as the configuration expects; 1: a driver stopped or threw when that was
// not expected (or did not when it was); 2: the run could not be made, or its output could
// not be written (a standard output that fails stops the run); 130: SIGINT or SIGTERM
// stopped it.
int run(const RunRequest& request);

// 0: no problems; 1: problems; 2: the configuration cannot be read.
int check(const std::string& config);

int demo(const std::string& driver);

// Runs `print`, which writes to std::cout (the help, the version): its status, or 2 when what
// it wrote could not be written.
int printed(const std::function<int()>& print);

#if AXLSIM_SERVE
// 0 once stopped cleanly; 2 when the configuration cannot be run or the server started.
int serve(const serving::Request& request);
#endif

}  // namespace axlsim::commands
