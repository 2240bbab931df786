// SPDX-License-Identifier: MIT
#include "vplc/PlatformCalls.h"

#include "Controller.h"
#include "LastError.h"

namespace vplc {

std::optional<std::string> platformCall(std::string_view function) {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    return controller.dueFault(function);
}

void setLastError(std::string_view text) {
    lastError::set(text);
}

int calls(std::string_view function) {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    return controller.calls().count(function);
}

void inject(std::string_view function, Fault fault) {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    controller.calls().inject(function, fault);
}

void clearFaults() {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    controller.calls().clearFaults();
}

void resetCallCounts() {
    Controller& controller = Controller::instance();
    auto lock = controller.lock();
    controller.calls().resetCounts();
}

}  // namespace vplc
