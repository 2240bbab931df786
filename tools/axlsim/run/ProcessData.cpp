// SPDX-License-Identifier: MIT
#include "axlsim/run/ProcessData.h"

namespace axlsim {

uint16_t analogWord(const std::vector<uint8_t>& data, int channel) {
    const auto index = static_cast<std::size_t>(channel) * 2;
    if (index + 1 >= data.size()) {
        return 0;
    }
    return static_cast<uint16_t>((data[index] << 8) | data[index + 1]);
}

bool digitalPin(const std::vector<uint8_t>& data, int pin) {
    return !data.empty() && ((data[0] >> pin) & 1) != 0;
}

}  // namespace axlsim
