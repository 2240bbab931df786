// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"
#include "Arp/System/Rsc/Services/IRscServiceProxyFactory.hpp"

namespace Arp::Device::Interface::Services {

// Describes IDeviceControlService for a service lookup: service
// "Arp.Device.Interface.Services.IDeviceControlService" of the provider "Arp".
class ARP_SYSTEM_API DeviceControlServiceProxyFactory
    : public Arp::System::Rsc::Services::IRscServiceProxyFactory {
public:
    static DeviceControlServiceProxyFactory& GetInstance();

    ~DeviceControlServiceProxyFactory() override;

    const char* GetServiceProviderName() const override;
    String GetServiceName() const override;

private:
    DeviceControlServiceProxyFactory() = default;
};

}  // namespace Arp::Device::Interface::Services
