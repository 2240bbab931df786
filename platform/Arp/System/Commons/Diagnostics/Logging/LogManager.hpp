// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp::System::Commons::Diagnostics::Logging {

// The runtime's logging.
class ARP_SYSTEM_API LogManager {
public:
    // Binds the runtime's logging to the application domain.
    static void AssignAppDomain(Arp::AppDomain& domain);
};

}  // namespace Arp::System::Commons::Diagnostics::Logging
