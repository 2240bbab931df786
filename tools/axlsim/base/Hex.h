// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace axlsim {

// Bytes as lower-case hexadecimal text, two digits per byte ("01ff").
std::string toHex(std::span<const uint8_t> bytes);

// The bytes of a hexadecimal text of an even number of digits (either case); nothing for any
// other text.
std::optional<std::vector<uint8_t>> fromHex(std::string_view text);

}  // namespace axlsim
