// SPDX-License-Identifier: MIT
#include "Arp/System/Rsc/ServiceManager.hpp"

#include <string_view>

#include "DeviceControlNames.h"
#include "ForeignRscService.h"
#include "RuntimeCall.h"
#include "RuntimeState.h"
#include "VirtualDeviceControlService.h"

namespace Arp::System::Rsc {

Services::IRscService* ServiceManager::GetService(const char* providerName,
                                                  Services::IRscServiceProxyFactory& factory) {
    vplc::enterRuntimeCall(vplc::Runtime::kGetService);
    switch (vplc::RuntimeState::instance().serviceLookup()) {
        case vplc::Runtime::Lookup::NoService:
            return nullptr;
        case vplc::Runtime::Lookup::WrongType:
            return new vplc::ForeignRscService();
        default:
            break;
    }
    // The virtual controller's one provider offers the one service.
    if (providerName == nullptr ||
        std::string_view(providerName) != vplc::kDeviceControlProviderName ||
        factory.GetServiceName() != vplc::kDeviceControlServiceName) {
        return nullptr;
    }
    return new vplc::VirtualDeviceControlService();
}

}  // namespace Arp::System::Rsc
