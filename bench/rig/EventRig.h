// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "BenchRig.h"
#include "FloorWriter.h"
#include "HostRecords.h"
#include "Workload.h"

namespace axlbench {

// Output events on the virtual controller, handled by the driver's onReceiveEvent (called through
// the CSI_base interface) or by the floor. Successive events
// alternate between two values, so every event changes the outputs; the floor writes the very
// bytes the driver writes. The driver's scanning thread is held meanwhile, so nothing else runs.
class EventRig : public BenchRig {
public:
    EventRig(EventKind kind, Side side);

    // One event, on the calling thread.
    void deliver();

private:
    // Both sides must leave the same outputs on the bus; throws std::runtime_error otherwise.
    void checkOutputs(const std::vector<uint8_t>& expected) const;

    std::unique_ptr<FloorWriter> writer_;
    stEventParams_t event_;
    unsigned char payloads_[2][4] = {};  // what the host sends to the driver
    unsigned char bytes_[2][2] = {};     // what the floor writes, as the driver writes it
    int phase_ = 0;
};

}  // namespace axlbench
