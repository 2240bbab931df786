// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "ByteReader.h"
#include "Findings.h"
#include "PublicationWatch.h"
#include "RushedClock.h"
#include "SI_base.h"
#include "hosting/DriverPtr.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"

namespace fuzz {

// Sends random events to two configured drivers (the digital module at position 1, the analog
// module at position 2) while their scans run back to back and their inputs change under them.
// The drivers live as long as the fuzzer; each input is a sequence of steps, read with a
// ByteReader until it is used up:
//
//   step byte % 8 = 0..4  an event: a flags byte (bit 0: the analog driver, bit 1: a null
//                         payload, bits 2-3: the id is one of the driver's output, input or
//                         restart ids, chosen by the next byte, or the next four bytes), the size
//                         (two bytes, up to 4096), four payload bytes and a byte that fills the
//                         rest of the payload
//   5                     the digital inputs: one byte
//   6                     an analog input: a channel byte and the raw word (two bytes)
//   7                     how the restart's service lookup behaves from now on: one byte
//
// After each event the fuzzer checks the outputs in the GDS and on the bus against a model of
// what the event may change, the platform calls it made, the stop it reported and the exception
// it let out; publications are checked as they are made.
class EventFuzzer {
public:
    // Not copyable, as its watch and its drivers are not.
    EventFuzzer();
    ~EventFuzzer();

    // The findings for one input, one per line; empty when the drivers behaved.
    std::string run(std::span<const uint8_t> input);

private:
    // One driver and what its configuration binds.
    struct Target {
        hosting::DriverPtr<> driver;
        std::map<uint32_t, std::vector<int>> outputs;  // event id -> pins, ascending
        std::vector<uint32_t> inputs;
        std::vector<uint32_t> restarts;
        bool analog = false;
    };

    void deliverEvent(ByteReader& reader);
    uint32_t chooseId(const Target& target, int source, ByteReader& reader);
    void applyToModel(const Target& target, uint32_t id, const std::vector<uint8_t>& payload);
    void checkOutputs(const std::string& event);
    std::string expectedException() const;

    PublicationWatch watch_;
    RushedClock clock_;
    vplc::Station station_;
    Target targets_[2];
    uint8_t digitalOutputs_ = 0;
    uint16_t analogOutputs_[2] = {0, 0};
    vplc::Runtime::Lookup lookup_ = vplc::Runtime::Lookup::Normal;
    Findings findings_;
};

}  // namespace fuzz
