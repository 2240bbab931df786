// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

// Keys the driver never reads among a creation's or a service's settings: a misspelt key leaves
// the setting it was meant for unset. `kind` names the service ("" at creation).
void checkKeys(DriverCheck& check, std::optional<unsigned> key, const std::string& where,
               const std::map<std::string, std::string>& params,
               const std::vector<std::string_view>& known, const std::string& kind);

}  // namespace axlsim::configcheck
