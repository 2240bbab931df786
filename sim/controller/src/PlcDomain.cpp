// SPDX-License-Identifier: MIT
#include "vplc/PlcDomain.h"

#include "Controller.h"

namespace vplc {

ArpPlcDomainHandler plcOperationHandler() {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    return controller.handler();
}

}  // namespace vplc
