// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace hosting {

// The payload of an analog event or publication: the float's bytes as the host's memory holds
// them.
inline std::vector<uint8_t> floatBytes(float value) {
    std::vector<uint8_t> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

}  // namespace hosting
