// SPDX-License-Identifier: MIT
#include "EventRig.h"

#include <cstring>
#include <stdexcept>

namespace axlbench {

EventRig::EventRig(EventKind kind, Side side) : BenchRig(moduleOf(kind)) {
    std::vector<FloorWriter::Write> writes;
    std::vector<uint8_t> expected;
    if (side == Side::Floor) {
        frames_ = std::make_unique<FloorFrames>();
    }
    switch (kind) {
        case EventKind::Digital:
            event_.nId = kFirstOutputId + 3;
            event_.nSize = 1;
            payloads_[1][0] = 1;
            bytes_[1][0] = 0x08;
            expected = {0x08};
            if (frames_) {
                writes = {{frames_->outputOffset("DO8"), 1}};
            }
            break;
        case EventKind::TwoPins:
            event_.nId = kSharedOutputId;
            event_.nSize = 1;
            payloads_[1][0] = 1;
            bytes_[1][0] = 0xC0;
            expected = {0xC0};
            if (frames_) {
                const std::size_t byte = frames_->outputOffset("DO8");
                writes = {{byte, 1}, {byte, 1}};
            }
            break;
        case EventKind::Analog: {
            event_.nId = kFirstOutputId + 1;
            event_.nSize = 4;
            // 2.5 and 5.0 are the words 7500 (0x1D4C) and 15000 (0x3A98), stored big-endian.
            const float values[2] = {2.5f, 5.0f};
            std::memcpy(payloads_[0], &values[0], sizeof(float));
            std::memcpy(payloads_[1], &values[1], sizeof(float));
            bytes_[0][0] = 0x1D;
            bytes_[0][1] = 0x4C;
            bytes_[1][0] = 0x3A;
            bytes_[1][1] = 0x98;
            expected = {0x00, 0x00, 0x3A, 0x98};
            if (frames_) {
                writes = {{frames_->outputOffset("AQ32") + 2, 2}};
            }
            break;
        }
    }
    if (side == Side::Driver) {
        startDriver(moduleOf(kind));
        clock_.waitUntilHeld();
    } else {
        writer_ = std::make_unique<FloorWriter>(frames_->out(), std::move(writes));
    }
    deliver();
    checkOutputs(expected);
}

void EventRig::deliver() {
    phase_ ^= 1;
    if (driver_) {
        // Straight to the handler, past the host's dispatch (hosting::host::deliver), so that
        // what is timed and counted is the driver's handling alone, as the floor's is.
        event_.pData = payloads_[phase_];
        driver_->onReceiveEvent(event_);
    } else {
        writer_->write(bytes_[phase_]);
    }
}

void EventRig::checkOutputs(const std::vector<uint8_t>& expected) const {
    if (station_.outputsOnBus(1) != expected) {
        throw std::runtime_error("the outputs on the bus are not those the event asks for");
    }
}

}  // namespace axlbench
