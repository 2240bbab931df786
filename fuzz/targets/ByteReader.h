// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace fuzz {

// Takes values from a fuzzer's input, front to back. Every input is valid: once the input is
// used up, every value reads as 0, so a short input is a prefix of a longer one.
class ByteReader {
public:
    explicit ByteReader(std::span<const uint8_t> input) : input_(input) {}

    bool empty() const { return position_ >= input_.size(); }

    uint8_t byte();
    uint16_t word();        // two bytes, the first one low
    uint32_t doubleWord();  // four bytes, the first one low

private:
    std::span<const uint8_t> input_;
    std::size_t position_ = 0;
};

}  // namespace fuzz
