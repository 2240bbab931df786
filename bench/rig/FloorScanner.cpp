// SPDX-License-Identifier: MIT
#include "FloorScanner.h"

#include <cstring>
#include <ctime>
#include <utility>

#include "Arp/Plc/AnsiC/Io/Axio.h"

namespace axlbench {

namespace {

constexpr long kScanPauseNs = 100000000;

}  // namespace

FloorScanner::FloorScanner(TGdsBuffer* in, std::vector<Read> reads)
    : CPosixThread(0), in_(in), reads_(std::move(reads)) {}

void FloorScanner::run() {
    for (;;) {
        ArpPlcAxio_ReadFromAxioToGds(0);
        for (const Read& read : reads_) {
            char* data = nullptr;
            if (ArpPlcGds_BeginRead(in_, &data)) {
                std::memcpy(value_, data + read.offset, read.size);
            }
            ArpPlcGds_EndRead(in_);
        }
        timespec pause{0, kScanPauseNs};
        nanosleep(&pause, &pause);
    }
}

}  // namespace axlbench
