// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp::System::Rsc::Services {

// A service offered through the RSC layer. Service lookups hand out objects of this type; the
// caller owns them.
class ARP_SYSTEM_API IRscService {
public:
    IRscService() = default;
    IRscService(const IRscService&) = delete;
    IRscService& operator=(const IRscService&) = delete;
    virtual ~IRscService();
};

}  // namespace Arp::System::Rsc::Services
