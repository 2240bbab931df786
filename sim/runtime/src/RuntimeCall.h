// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Arp/System/Core/Exception.hpp"
#include "vplc/PlatformCalls.h"

namespace vplc {

// Reports a call of a runtime entry point to the controller's call accounting; a fault injected
// for it fails the call the way the platform's runtime does, with an Arp::Exception.
inline void enterRuntimeCall(std::string_view function) {
    if (std::optional<std::string> fault = platformCall(function)) {
        throw Arp::Exception(*fault);
    }
}

}  // namespace vplc
