// SPDX-License-Identifier: MIT
#pragma once

namespace vplc {

// How the device-control service is known to the RSC layer.
inline constexpr const char* kDeviceControlProviderName = "Arp";
inline constexpr const char* kDeviceControlServiceName =
    "Arp.Device.Interface.Services.IDeviceControlService";

}  // namespace vplc
