// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "PosixThread.h"

namespace axlbench {

// The floor of a scan: a thread that makes exactly the platform calls of one driver scan (the
// copy of the bus inputs into the GDS, then one begin read, read and end read per input pin)
// and pauses 100 ms like the driver, with nothing else around them. It runs on a host thread
// like a driver's, so that its pauses reach the pause clock the same way; the host ends it.
class FloorScanner final : public CPosixThread {
public:
    // One input pin: `size` bytes at `offset` of the input frame.
    struct Read {
        std::size_t offset;
        std::size_t size;
    };

    FloorScanner(TGdsBuffer* in, std::vector<Read> reads);

    void run() override;

private:
    TGdsBuffer* in_;
    std::vector<Read> reads_;
    unsigned char value_[2] = {};
};

}  // namespace axlbench
