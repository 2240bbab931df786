// SPDX-License-Identifier: MIT
#include "ByteReader.h"

namespace fuzz {

uint8_t ByteReader::byte() {
    return empty() ? 0 : input_[position_++];
}

uint16_t ByteReader::word() {
    const uint16_t low = byte();
    return static_cast<uint16_t>(low | (byte() << 8));
}

uint32_t ByteReader::doubleWord() {
    const uint32_t low = word();
    return low | (static_cast<uint32_t>(word()) << 16);
}

}  // namespace fuzz
