// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "Arp/Device/Interface/Services/IDeviceControlService.hpp"

#define RESTART_CLIENT_API __attribute__((visibility("default")))

namespace restartclient {

// The device-control service, looked up through the typed lookup.
RESTART_CLIENT_API std::shared_ptr<Arp::Device::Interface::Services::IDeviceControlService>
lookUpDeviceControl();

// Looks the service up, restarts the device and releases the service, in one statement pair.
RESTART_CLIENT_API void restartDevice();

}  // namespace restartclient
