// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "axlsim/configuration/Config.h"
#include "hosting/DriverLibrary.h"

namespace axlsim::serving {

// axlsim serve: the configuration's run, live, paced to the wall clock, with its page and API
// over HTTP until Ctrl-C, SIGTERM or POST /api/stop.

struct Request {
    std::string config;
    int port = 8080;
    std::string listen = "127.0.0.1";
    std::string speed = "1";  // a factor, or "max"
    bool paused = false;
    std::string driver;
    std::optional<std::string> modbus;  // [ADDR:]PORT of the Modbus TCP server, if any
};

// 0 once stopped cleanly; 2 when the server cannot be started.
int serve(const Config& config, const hosting::DriverLibrary& library, const Request& request);

}  // namespace axlsim::serving
