// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/ArpSystemExport.h"
#include "Arp/System/Rsc/Services/IRscService.hpp"

namespace Arp::Device::Interface::Services {

// Control of the controller device itself.
class ARP_SYSTEM_API IDeviceControlService : public Arp::System::Rsc::Services::IRscService {
public:
    virtual ~IDeviceControlService();

    // Restarts the controller.
    virtual void RestartDevice() = 0;

    // Returns the controller's settings to their factory state; they take effect at the next
    // restart.
    virtual void ResetToFactoryDefaults() = 0;
};

}  // namespace Arp::Device::Interface::Services
