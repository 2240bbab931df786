// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "DriverFactory.h"
#include "SI_base.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

namespace hosting {

// A host with one driver on the virtual controller, on virtual time: the recorder, the clock, the
// bus and the driver, made in that order. The bus holds the digital module at position 1 and the
// analog module at position 2, unless a bus of its own is given. After initialize() scans are
// held at their start, so that the test lets the driver thread through one scan at a time and
// nothing runs in between; a host that lets them run initialises with host::initialize instead.
// The runtime's defaults are brought back when the rig is made and when it goes.
//
// The members are made in the order the host needs them and go in reverse: the driver (its
// thread ended first) before the station, the station before the clock.
class DriverRig {
public:
    static constexpr int kDigitalPosition = 1;
    static constexpr int kAnalogPosition = 2;

    DriverRig();
    explicit DriverRig(const std::vector<vplc::Module>& bus);
    ~DriverRig();
    DriverRig(const DriverRig&) = delete;
    DriverRig& operator=(const DriverRig&) = delete;

    // Through the factory, as a host does; the version line is attributed to the driver.
    CSI_base& create(const DriverConfig& records, DriverFactory factory = &CreateSiObject);

    // The same with the records' own tables, so that the test sees what the factory did to them.
    CSI_base& create(DriverConfig& records, DriverFactory factory = &CreateSiObject);

    // Takes a driver that `construct` makes, attributing its version line to it.
    CSI_base& adopt(const std::function<CSI_base*()>& construct);

    // Holds scans first, so that a started thread waits at the start of its initial publication.
    void initialize();

    // Lets the driver thread through one scan start and runs its scan until it is back at the
    // next scan start. The first call after initialize() runs the initial publication.
    void passGate();

    // Delivers an event as the host does. The payload buffer holds at least four bytes, as a host
    // keeps for every event, whatever `size` says.
    void deliver(uint32_t id, std::vector<uint8_t> payload, uint32_t size);
    void deliver(uint32_t id, std::vector<uint8_t> payload);
    void deliverFloat(uint32_t id, float value);
    void deliverNull(uint32_t id);

    // Ends the driver's thread and deletes the driver.
    void destroy();

    bool threadStarted() const;

    CSI_base& driver() { return *driver_; }
    const CSI_base& driver() const { return *driver_; }
    orbel::Recorder& recorder() { return recorder_; }
    vplc::VirtualClock& clock() { return clock_; }
    vplc::Station& station() { return station_; }

private:
    orbel::Recorder recorder_;
    vplc::VirtualClock clock_;
    vplc::Station station_;
    DriverPtr<> driver_;
};

}  // namespace hosting
