// SPDX-License-Identifier: MIT
#include "Controller.h"

#include <stdexcept>

#include "Bus.h"
#include "LastError.h"

namespace vplc {

Controller& Controller::instance() {
    // Never destroyed: handles and frames must outlive every driver, including drivers that static
    // destructors tear down at exit.
    static Controller* const controller = new Controller();
    return *controller;
}

void Controller::install(Bus& bus) {
    if (bus_ != nullptr) {
        throw std::logic_error(
            "An Axioline bus is already running: destroy its station before building another");
    }
    bus_ = &bus;
    calls_.resetCounts();
    calls_.clearFaults();
}

std::optional<std::string> Controller::dueFault(std::string_view function) {
    return dueFault(calls_.slot(function), function);
}

std::optional<std::string> Controller::dueFault(CallRegistry::Slot& slot,
                                                std::string_view function) {
    std::optional<std::string> fault = calls_.record(slot, function);
    if (fault) {
        lastError::set(*fault);
    }
    return fault;
}

void Controller::uninstall(Bus& bus) {
    if (bus_ != &bus) {
        return;
    }
    for (Frame which : {Frame::In, Frame::Out}) {
        const auto& frame = bus.frame(which);
        frame->retire();
        if (frame->holders() > 0) {
            abandonedFrames_.push_back(frame);
        }
    }
    calls_.clearFaults();
    bus_ = nullptr;
}

}  // namespace vplc
