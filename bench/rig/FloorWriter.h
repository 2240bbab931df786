// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"

namespace axlbench {

// The floor of an output event: exactly the platform calls of the driver's event path (one begin
// write, write and end write per pin bound to the event, then the copy of the GDS outputs to
// the bus), writing bytes prepared beforehand, with no driver logic around them.
class FloorWriter {
public:
    // One pin bound to the event: `size` bytes at `offset` of the output frame.
    struct Write {
        std::size_t offset;
        std::size_t size;
    };

    FloorWriter(TGdsBuffer* out, std::vector<Write> writes);

    // Writes `bytes` to every pin, then copies the outputs to the bus.
    void write(const unsigned char* bytes);

private:
    TGdsBuffer* out_;
    std::vector<Write> writes_;
};

}  // namespace axlbench
