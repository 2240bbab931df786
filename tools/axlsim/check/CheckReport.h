// SPDX-License-Identifier: MIT
#pragma once

#include <ostream>
#include <vector>

#include "axlsim/check/ConfigCheck.h"
#include "axlsim/check/LoopCheck.h"
#include "axlsim/configuration/Config.h"

namespace axlsim {

// The findings of `axlsim check`, grouped by driver: for each, where it is, what is wrong, what
// the driver will do, and how to fix it; then the failure each driver meets first.
class CheckReport {
public:
    // The findings of the plant and host sections follow the drivers', under their own title.
    static void write(std::ostream& out, const Config& config,
                      const std::vector<ConfigCheck::Finding>& findings,
                      const std::vector<LoopCheck::Finding>& loop = {});

    // What the driver does for a finding, in words: its log line, stop or exception.
    static std::string outcome(const ConfigCheck::Finding& finding);
};

}  // namespace axlsim
