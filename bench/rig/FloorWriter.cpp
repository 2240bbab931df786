// SPDX-License-Identifier: MIT
#include "FloorWriter.h"

#include <cstring>
#include <utility>

#include "Arp/Plc/AnsiC/Io/Axio.h"

namespace axlbench {

FloorWriter::FloorWriter(TGdsBuffer* out, std::vector<Write> writes)
    : out_(out), writes_(std::move(writes)) {}

void FloorWriter::write(const unsigned char* bytes) {
    for (const Write& write : writes_) {
        char* data = nullptr;
        if (ArpPlcGds_BeginWrite(out_, &data)) {
            std::memcpy(data + write.offset, bytes, write.size);
        }
        ArpPlcGds_EndWrite(out_);
    }
    ArpPlcAxio_WriteFromGdsToAxio(0);
}

}  // namespace axlbench
