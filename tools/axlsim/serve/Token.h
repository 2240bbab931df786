// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace axlsim {

// The secret that every API request carries: 128 random bits, fresh for each start of the
// server, as 32 hexadecimal digits.
std::string freshToken();

}  // namespace axlsim
