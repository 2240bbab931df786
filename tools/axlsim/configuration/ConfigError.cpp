// SPDX-License-Identifier: MIT
#include "axlsim/configuration/ConfigError.h"

#include <utility>

namespace axlsim {

namespace {

std::string describe(const std::string& file, const std::string& place, const std::string& reason) {
    return file + (place.empty() ? "" : ": " + place) + ": " + reason;
}

}  // namespace

ConfigError::ConfigError(std::string file, std::string place, std::string reason)
    : std::runtime_error(describe(file, place, reason)),
      file_(std::move(file)),
      place_(std::move(place)),
      reason_(std::move(reason)) {}

}  // namespace axlsim
