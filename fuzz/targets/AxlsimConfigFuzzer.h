// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

// Hands any text to axlsim's configuration reader, and what it reads to the configuration check.
// Finds an exception other than a ConfigError with a reason, a configuration read that breaks
// what the reader promises (scenario in time order, events for drivers that exist, inputs on
// positions of the bus, a bus of at most 63 modules), and any exception from the check.
class AxlsimConfigFuzzer {
public:
    // The findings for one input, one per line; empty when the reader behaved.
    std::string run(std::span<const uint8_t> input);
};

}  // namespace fuzz
