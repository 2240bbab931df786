// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

namespace axlsim {

// A module's process data as the bus holds it: analog channels are 16-bit words, most
// significant byte first; digital pins are the bits of one byte.
uint16_t analogWord(const std::vector<uint8_t>& data, int channel);
bool digitalPin(const std::vector<uint8_t>& data, int pin);

}  // namespace axlsim
