// SPDX-License-Identifier: MIT
#include "modules/IbIlConversion.h"

#include <cstdint>

namespace {

// The float nearest to 1/3000 (bit pattern 0x39AEC33E). Both directions use this one constant, so
// that a word read back and written out again is scaled by the same factor.
constexpr float fIbIlStep = 1.0f / 3000.0f;

}  // namespace

float from_ib_il(unsigned short raw) {
    return static_cast<float>(raw) * fIbIlStep;
}

unsigned short to_ib_il(float value) {
    const float fCount = value / fIbIlStep;

    // Converting a float that is negative, NaN or not below 2^32 to an unsigned integer is
    // undefined in C++, so the saturation is spelt out: the result must be the same on every
    // processor the driver runs on.
    uint32_t nCount = 0;
    if (fCount >= 4294967296.0f) {
        nCount = UINT32_MAX;
    } else if (fCount > 0.0f) {
        nCount = static_cast<uint32_t>(fCount);
    }
    return static_cast<unsigned short>(nCount & 0xFFFFu);
}
