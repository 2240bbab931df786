// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <istream>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "axlsim/configuration/Config.h"

namespace axlsim::configreader {

// Reads a configuration (JSON with comments). Anything it cannot use is a ConfigError that names
// the file, the place and the reason; what the driver will make of the texts it passes on is
// not judged here (that is configcheck's), only whether the file says something axlsim can do.

// Axioline F allows at most this many modules on a local bus.
inline constexpr int kMaxBusModules = 63;

// The largest configuration axlsim reads: far beyond any real one, small enough that a
// stream without end is refused before it fills the memory.
inline constexpr std::size_t kMaxBytes = 256 * 1024 * 1024;

// A regular file, or standard input for "-"; anything else (a directory, a device, a file
// larger than kMaxBytes) is refused before it is read.
Config readFile(const std::string& file);
Config readStream(std::istream& in, const std::string& name, std::size_t limit = kMaxBytes);
Config readText(const std::string& text, const std::string& name);

// Every key a configuration can have, at any place.
std::vector<std::string_view> keys();

// One action read exactly as a scenario step's: a mistake is the same ConfigError, its place a
// JSON pointer into `node` and its file `name`. For what is asked while a run goes on.
Config::Input inputStep(const nlohmann::json& node, const Config& config, const std::string& name);
Config::Event eventStep(const nlohmann::json& node, const Config& config, const std::string& name);
// {"operation": a name or number}
Config::Plc plcStep(const nlohmann::json& node, const std::string& name);

}  // namespace axlsim::configreader
