// SPDX-License-Identifier: MIT
#include "axlsim/serve/Token.h"

#include <cstdint>
#include <random>
#include <vector>

#include "axlsim/base/Hex.h"

namespace axlsim {

std::string freshToken() {
    // std::random_device draws from the operating system's random source.
    std::random_device source;
    std::vector<uint8_t> bytes;
    for (int i = 0; i < 4; ++i) {
        const uint32_t word = source();
        for (int shift = 0; shift < 32; shift += 8) {
            bytes.push_back(static_cast<uint8_t>(word >> shift));
        }
    }
    return toHex(bytes);
}

}  // namespace axlsim
