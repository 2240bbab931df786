// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"

namespace axlsim {

// PLC operations by the names a configuration gives them ("StartWarm"), without the prefix of
// their C enumerators.
std::optional<PlcOperation> plcOperationFromName(std::string_view name);
std::string plcOperationName(int operation);  // "?" for a value that names no operation

// The known names, for messages: "None, Load, ...".
std::string plcOperationNames();

}  // namespace axlsim
