// SPDX-License-Identifier: MIT
#include "Arp/Device/Interface/Services/IDeviceControlService.hpp"

namespace Arp::Device::Interface::Services {

IDeviceControlService::~IDeviceControlService() = default;

}  // namespace Arp::Device::Interface::Services
