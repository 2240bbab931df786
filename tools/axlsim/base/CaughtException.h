// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace axlsim {

// An exception that left the driver, as a host can describe it.
struct CaughtException {
    std::string type;  // the class as C++ names it ("std::invalid_argument")
    std::string what;  // its text, or empty for an exception that is no std::exception

    // Describes the exception being handled; call it only inside a catch block.
    static CaughtException current();

    bool operator==(const CaughtException&) const = default;
};

}  // namespace axlsim
