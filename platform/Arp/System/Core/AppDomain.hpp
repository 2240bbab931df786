// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp {

// The application domain of the Arp runtime: the context that the runtime's managers are bound
// to. The system module makes one per process.
class ARP_SYSTEM_API AppDomain {
public:
    AppDomain();
    AppDomain(const AppDomain&) = delete;
    AppDomain& operator=(const AppDomain&) = delete;
    ~AppDomain();
};

}  // namespace Arp
