// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "vplc/Module.h"

namespace vplc {

// One terminal module on the bus: its input process data as the wiring sets it, and its output
// process data as the bus last delivered it, both in the byte order of the GDS frames (analog
// words big-endian).
class TerminalModule {
public:
    explicit TerminalModule(Module kind);

    Module kind() const { return kind_; }
    std::string_view inputPort() const;
    std::string_view outputPort() const;
    std::size_t inputSize() const { return inputs_.size(); }
    std::size_t outputSize() const { return outputs_.size(); }

    const std::vector<uint8_t>& inputs() const { return inputs_; }
    const std::vector<uint8_t>& outputs() const { return outputs_; }

    // Takes outputSize() bytes as the module's new outputs.
    void latchOutputs(const uint8_t* data);

    void setDigitalInput(int pin, bool on);
    void setDigitalInputs(uint8_t byte);
    void setAnalogInput(int channel, uint16_t raw);
    uint8_t digitalOutputs() const;
    uint16_t analogOutput(int channel) const;

private:
    void require(Module kind) const;
    static std::size_t channelOffset(int channel);

    Module kind_;
    std::vector<uint8_t> inputs_;
    std::vector<uint8_t> outputs_;
};

}  // namespace vplc
