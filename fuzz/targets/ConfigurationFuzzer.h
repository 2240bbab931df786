// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace fuzz {

// Hands random host records (ConfigurationText) to CreateSiObject and initialize on the virtual
// controller, with platform calls failing as the input says, runs the driver for a few scans and
// deletes it. Finds anything the host contract
// does not allow: an exception other than the "stoi" ones, a changed host record, a log line or a
// stop that is not the driver's, a thread that runs after a stop or is missing without one, an
// output written on a module the driver does not serve, a publication of the wrong size, and a
// GDS buffer, frame lock or thread left behind.
class ConfigurationFuzzer {
public:
    // The findings for one input, one per line; empty when the driver behaved.
    std::string run(std::span<const uint8_t> input);
};

}  // namespace fuzz
