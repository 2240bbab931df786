// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "FloorFrames.h"
#include "FloorWriter.h"
#include "HostRecords.h"
#include "ScanBatchClock.h"
#include "SilentHost.h"
#include "Workload.h"
#include "hosting/DriverPtr.h"
#include "vplc/Station.h"

namespace axlbench {

// Output events on the virtual controller, handled by the driver's onReceiveEvent (called through
// the CSI_base interface) or by the floor. Successive events
// alternate between two values, so every event changes the outputs; the floor writes the very
// bytes the driver writes. The driver's scanning thread is held meanwhile, so nothing else runs.
class EventRig {
public:
    EventRig(EventKind kind, Side side);
    ~EventRig();
    EventRig(const EventRig&) = delete;
    EventRig& operator=(const EventRig&) = delete;

    // One event, on the calling thread.
    void deliver();

private:
    // Both sides must leave the same outputs on the bus; throws std::runtime_error otherwise.
    void checkOutputs(const std::vector<uint8_t>& expected) const;

    SilentHost host_;
    vplc::Station station_;
    ScanBatchClock clock_;
    std::unique_ptr<FloorFrames> frames_;
    std::unique_ptr<FloorWriter> writer_;
    // Configured with every pin of the module at position 1 (see Workload.h for its event ids).
    hosting::DriverPtr<> driver_;
    stEventParams_t event_;
    unsigned char payloads_[2][4] = {};  // what the host sends to the driver
    unsigned char bytes_[2][2] = {};     // what the floor writes, as the driver writes it
    int phase_ = 0;
};

}  // namespace axlbench
