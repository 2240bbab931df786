// SPDX-License-Identifier: MIT
#include "Arp/Device/Interface/Services/DeviceControlServiceProxyFactory.hpp"

#include "DeviceControlNames.h"
#include "RuntimeState.h"

namespace Arp::Device::Interface::Services {

DeviceControlServiceProxyFactory& DeviceControlServiceProxyFactory::GetInstance() {
    static DeviceControlServiceProxyFactory factory;
    return factory;
}

DeviceControlServiceProxyFactory::~DeviceControlServiceProxyFactory() = default;

const char* DeviceControlServiceProxyFactory::GetServiceProviderName() const {
    switch (vplc::RuntimeState::instance().serviceLookup()) {
        case vplc::Runtime::Lookup::EmptyProviderName:
            return "";
        case vplc::Runtime::Lookup::NullProviderName:
            return nullptr;
        default:
            return vplc::kDeviceControlProviderName;
    }
}

String DeviceControlServiceProxyFactory::GetServiceName() const {
    return vplc::kDeviceControlServiceName;
}

}  // namespace Arp::Device::Interface::Services
