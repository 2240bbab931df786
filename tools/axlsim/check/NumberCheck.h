// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>

#include "axlsim/check/DriverCheck.h"
#include "axlsim/configuration/DriverNumber.h"

namespace axlsim::configcheck {

// A number setting: the exception when the driver's conversion throws, or the value it takes
// when that is not what the text shows. The reading, when there is a value. `example` is a
// value the fix proposes.
std::optional<DriverNumber> checkNumber(DriverCheck& check, std::optional<unsigned> key,
                                        const std::string& where,
                                        const std::map<std::string, std::string>& params,
                                        const std::string& name, const std::string& example);

}  // namespace axlsim::configcheck
