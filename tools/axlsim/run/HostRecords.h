// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/configuration/Config.h"
#include "hosting/DriverConfig.h"

namespace axlsim {

// The records the host hands to CreateSiObject for one driver of a configuration, with every text
// as the configuration writes it.
hosting::DriverConfig hostRecordsOf(const Config::Driver& config);

}  // namespace axlsim
