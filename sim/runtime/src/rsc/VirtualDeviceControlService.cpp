// SPDX-License-Identifier: MIT
#include "VirtualDeviceControlService.h"

#include "RuntimeCall.h"
#include "RuntimeState.h"

namespace vplc {

VirtualDeviceControlService::VirtualDeviceControlService() {
    RuntimeState::instance().serviceMade();
}

VirtualDeviceControlService::~VirtualDeviceControlService() {
    RuntimeState::instance().serviceDestroyed();
}

void VirtualDeviceControlService::RestartDevice() {
    enterRuntimeCall(Runtime::kRestartDevice);
    RuntimeState::instance().restartDone();
}

void VirtualDeviceControlService::ResetToFactoryDefaults() {
    enterRuntimeCall(Runtime::kResetToFactoryDefaults);
    RuntimeState::instance().factoryResetDone();
}

}  // namespace vplc
