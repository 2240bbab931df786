// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "vplc/Frame.h"

// A GDS buffer handle as the C interface hands it out: which frame of which bus it names, and
// whether it has been given back.
struct TGdsBuffer {
    std::uint64_t busSerial;
    vplc::Frame frame;
    bool released;
};
