// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"

namespace vplc {

// The handler last registered through ArpPlcDomain_SetHandler, or null: the runtime calls it on
// every PLC operation.
ArpPlcDomainHandler plcOperationHandler();

}  // namespace vplc
