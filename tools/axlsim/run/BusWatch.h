// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/run/Timeline.h"
#include "vplc/Station.h"

namespace axlsim {

// Notices the driver's copies of the outputs to the bus (ArpPlcAxio_WriteFromGdsToAxio). The
// driver makes them only on host threads, at the end of initialize and of event delivery, so
// comparing the count of copies before and after each host call finds every one of them, in
// its place on the timeline.
class BusWatch {
public:
    BusWatch(vplc::Station& station, Timeline& timeline);

    int writes() const;

    // Puts a bus write on the timeline for each copy made since `before`.
    void recordSince(int before, int driver) const;

    // Every module's output process data on the bus, or in the GDS, by position from 1.
    std::vector<std::vector<uint8_t>> busOutputs() const;
    std::vector<std::vector<uint8_t>> gdsOutputs() const;

private:
    // What `read` gives for every module, by position from 1.
    std::vector<std::vector<uint8_t>> ofEveryModule(
        std::vector<uint8_t> (vplc::Station::*read)(int position) const) const;

    vplc::Station& station_;
    Timeline& timeline_;
};

}  // namespace axlsim
