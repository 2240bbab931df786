// SPDX-License-Identifier: MIT
#include "Bus.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vplc {

namespace {

std::vector<TerminalModule> terminalsOf(const std::vector<Module>& modules) {
    return std::vector<TerminalModule>(modules.begin(), modules.end());
}

}  // namespace

Bus::Bus(const std::vector<Module>& modules, std::uint64_t serial)
    : serial_(serial),
      modules_(terminalsOf(modules)),
      layout_(modules_),
      in_(std::make_shared<GdsFrame>(Frame::In, layout_.size(Frame::In))),
      out_(std::make_shared<GdsFrame>(Frame::Out, layout_.size(Frame::Out))) {}

std::vector<Module> Bus::modules() const {
    std::vector<Module> kinds;
    for (const TerminalModule& module : modules_) {
        kinds.push_back(module.kind());
    }
    return kinds;
}

TerminalModule& Bus::module(int position) {
    return modules_[indexOf(position)];
}

const TerminalModule& Bus::module(int position) const {
    return modules_[indexOf(position)];
}

const std::shared_ptr<GdsFrame>& Bus::frame(Frame which) const {
    return which == Frame::In ? in_ : out_;
}

void Bus::copyInputsToGds() {
    for (std::size_t index = 0; index < modules_.size(); ++index) {
        const auto& inputs = modules_[index].inputs();
        const std::size_t offset = layout_.offset(Frame::In, static_cast<int>(index + 1));
        std::copy(inputs.begin(), inputs.end(), in_->data() + offset);
    }
}

void Bus::copyGdsToOutputs() {
    std::lock_guard cycle(busCycle_);
    for (std::size_t index = 0; index < modules_.size(); ++index) {
        const std::size_t offset = layout_.offset(Frame::Out, static_cast<int>(index + 1));
        modules_[index].latchOutputs(reinterpret_cast<const uint8_t*>(out_->data() + offset));
    }
}

int Bus::openLocks() const {
    return in_->holders() + out_->holders();
}

std::size_t Bus::indexOf(int position) const {
    if (position < 1 || static_cast<std::size_t>(position) > modules_.size()) {
        throw std::out_of_range("No module at position " + std::to_string(position) +
                                ": the bus holds " + std::to_string(modules_.size()) + " modules");
    }
    return static_cast<std::size_t>(position - 1);
}

}  // namespace vplc
