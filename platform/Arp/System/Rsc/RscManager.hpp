// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp::System::Rsc {

// The runtime's remote service call (RSC) layer.
class ARP_SYSTEM_API RscManager {
public:
    // Binds the runtime's service layer to the application domain.
    static void AssignAppDomain(Arp::AppDomain& domain);
};

}  // namespace Arp::System::Rsc
