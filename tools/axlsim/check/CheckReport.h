// SPDX-License-Identifier: MIT
#pragma once

#include <ostream>
#include <vector>

#include "axlsim/check/ConfigCheck.h"
#include "axlsim/check/LoopCheck.h"
#include "axlsim/configuration/Config.h"

namespace axlsim::checkreport {

// The findings of `axlsim check`, grouped by driver: for each, where it is, what is wrong, what
// the driver will do, and how to fix it; then the failure each driver meets first.

// The findings of the plant and host sections follow the drivers', under their own title.
void write(std::ostream& out, const Config& config,
           const std::vector<configcheck::Finding>& findings,
           const std::vector<loopcheck::Finding>& loop = {});

// What the driver does for a finding, in words: its log line, stop or exception.
std::string outcome(const configcheck::Finding& finding);

}  // namespace axlsim::checkreport
