// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"
#include "Arp/System/Rsc/Services/IRscService.hpp"
#include "Arp/System/Rsc/Services/IRscServiceProxyFactory.hpp"

namespace Arp::System::Rsc {

// Finds the services of the RSC layer.
class ARP_SYSTEM_API ServiceManager {
public:
    // A new object of the service that the named provider offers for the factory's service
    // name, or null if there is none. The caller owns the object.
    static Services::IRscService* GetService(const char* providerName,
                                             Services::IRscServiceProxyFactory& factory);

    // The factory's service as TService, owned by the result. Throws ArgumentException if the
    // factory names no provider, InvalidOperationException if the provider has no such service
    // and InvalidCastException if the service does not implement TService.
    template <class TService>
    static std::shared_ptr<TService> GetService(Services::IRscServiceProxyFactory& factory);
};

template <class TService>
std::shared_ptr<TService> ServiceManager::GetService(Services::IRscServiceProxyFactory& factory) {
    String providerName(factory.GetServiceProviderName());
    if (providerName.empty()) {
        throw Commons::ArgumentException("TService", factory.GetServiceName(),
                                         "Service does not specify a service provider");
    }
    Services::IRscService* pService = GetService(providerName.c_str(), factory);
    if (pService == nullptr) {
        throw Commons::InvalidOperationException(
            "Could not retrieve service '{0}' from service provider '{1}'.", TypeName<TService>(),
            providerName);
    }
    TService* pTypedService = dynamic_cast<TService*>(pService);
    if (pTypedService == nullptr) {
        delete pService;
        throw Commons::InvalidCastException(
            "The service does not implement service interface '{0}'.", factory.GetServiceName());
    }
    return std::shared_ptr<TService>(pTypedService);
}

}  // namespace Arp::System::Rsc
