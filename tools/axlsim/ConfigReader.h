#pragma once

#include <string>

#include "axlsim/Config.h"

namespace axlsim {

// Reads a configuration (JSON with comments). Anything it cannot use is a ConfigError that names
// the file, the place and the reason; what the driver will make of the texts it passes on is
// not judged here (that is ConfigCheck's), only whether the file says something axlsim can do.
class ConfigReader {
public:
    static Config readFile(const std::string& file);
    static Config readText(const std::string& text, const std::string& name);

    // Axioline F allows at most this many modules on a local bus.
    static constexpr int kMaxBusModules = 63;
};

}  // namespace axlsim
