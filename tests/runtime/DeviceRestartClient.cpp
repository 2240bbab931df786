// SPDX-License-Identifier: MIT
#include "DeviceRestartClient.h"

#include "Arp/Device/Interface/Services/DeviceControlServiceProxyFactory.hpp"
#include "Arp/System/Rsc/ServiceManager.hpp"

namespace restartclient {

std::shared_ptr<Arp::Device::Interface::Services::IDeviceControlService> lookUpDeviceControl() {
    return Arp::System::Rsc::ServiceManager::GetService<
        Arp::Device::Interface::Services::IDeviceControlService>(
        Arp::Device::Interface::Services::DeviceControlServiceProxyFactory::GetInstance());
}

void restartDevice() {
    auto pService = Arp::System::Rsc::ServiceManager::GetService<
        Arp::Device::Interface::Services::IDeviceControlService>(
        Arp::Device::Interface::Services::DeviceControlServiceProxyFactory::GetInstance());
    pService->RestartDevice();
}

}  // namespace restartclient
