// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp::System::Rsc::Services {

// Describes one service interface for a lookup: which provider offers it, under which name.
class ARP_SYSTEM_API IRscServiceProxyFactory {
public:
    IRscServiceProxyFactory() = default;
    IRscServiceProxyFactory(const IRscServiceProxyFactory&) = delete;
    IRscServiceProxyFactory& operator=(const IRscServiceProxyFactory&) = delete;
    virtual ~IRscServiceProxyFactory();

    virtual const char* GetServiceProviderName() const = 0;
    virtual String GetServiceName() const = 0;
};

}  // namespace Arp::System::Rsc::Services
