// SPDX-License-Identifier: MIT
#include "TerminalModule.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace vplc {

namespace {

constexpr int kDigitalPins = 8;
constexpr int kAnalogChannels = 2;
constexpr std::size_t kWordSize = 2;

std::size_t processDataSize(Module kind) {
    return kind == Module::DI8_DO8 ? 1 : kAnalogChannels * kWordSize;
}

}  // namespace

TerminalModule::TerminalModule(Module kind)
    : kind_(kind), inputs_(processDataSize(kind)), outputs_(processDataSize(kind)) {}

std::string_view TerminalModule::inputPort() const {
    return kind_ == Module::DI8_DO8 ? "DI8" : "AI32";
}

std::string_view TerminalModule::outputPort() const {
    return kind_ == Module::DI8_DO8 ? "DO8" : "AQ32";
}

void TerminalModule::latchOutputs(const uint8_t* data) {
    std::copy(data, data + outputs_.size(), outputs_.begin());
}

void TerminalModule::setDigitalInput(int pin, bool on) {
    require(Module::DI8_DO8);
    if (pin < 0 || pin >= kDigitalPins) {
        throw std::out_of_range("A digital module has no pin " + std::to_string(pin));
    }
    const auto mask = static_cast<uint8_t>(1U << pin);
    inputs_[0] =
        on ? static_cast<uint8_t>(inputs_[0] | mask) : static_cast<uint8_t>(inputs_[0] & ~mask);
}

void TerminalModule::setDigitalInputs(uint8_t byte) {
    require(Module::DI8_DO8);
    inputs_[0] = byte;
}

void TerminalModule::setAnalogInput(int channel, uint16_t raw) {
    require(Module::AI2_AO2);
    const std::size_t offset = channelOffset(channel);
    inputs_[offset] = static_cast<uint8_t>(raw >> 8);
    inputs_[offset + 1] = static_cast<uint8_t>(raw & 0xFF);
}

uint8_t TerminalModule::digitalOutputs() const {
    require(Module::DI8_DO8);
    return outputs_[0];
}

uint16_t TerminalModule::analogOutput(int channel) const {
    require(Module::AI2_AO2);
    const std::size_t offset = channelOffset(channel);
    return static_cast<uint16_t>((outputs_[offset] << 8) | outputs_[offset + 1]);
}

void TerminalModule::require(Module kind) const {
    if (kind_ != kind) {
        throw std::logic_error("This operation needs an " + std::string(orderName(kind)) +
                               ", the module is an " + std::string(orderName(kind_)));
    }
}

std::size_t TerminalModule::channelOffset(int channel) {
    if (channel < 0 || channel >= kAnalogChannels) {
        throw std::out_of_range("An analog module has no channel " + std::to_string(channel));
    }
    return static_cast<std::size_t>(channel) * kWordSize;
}

}  // namespace vplc
