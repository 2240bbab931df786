// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/Device/Interface/Services/IDeviceControlService.hpp"

namespace vplc {

// The device-control service of the virtual controller. Every object is counted while it lives.
class VirtualDeviceControlService : public Arp::Device::Interface::Services::IDeviceControlService {
public:
    VirtualDeviceControlService();
    ~VirtualDeviceControlService() override;

    void RestartDevice() override;
    void ResetToFactoryDefaults() override;
};

}  // namespace vplc
