// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "FaultRow.h"
#include "hosting/DriverRig.h"
#include "vplc/Plant.h"

namespace faultmatrix {

using hosting::DriverRig;

// The row's driver on the rig, with the shorthand the rows are written in.
class Scenario {
public:
    Scenario(const FaultRow& row, DriverRig& rig) : row_(row), rig_(rig) {}

    void createDigital() {
        rig_.create(digitalRecords());
        rig_.plant().setDigitalInput(DriverRig::kDigitalPosition, 3, true);
    }
    void createAnalog() {
        rig_.create(analogRecords());
        rig_.plant().setAnalogInput(DriverRig::kAnalogPosition, 0, 30000);
    }
    void startDigital() {
        createDigital();
        initialize();
        passGate();
    }
    void startAnalog() {
        createAnalog();
        initialize();
        passGate();
    }
    void initialize() { rig_.initialize(); }
    void passGate() { rig_.passGate(); }

    // Arms the row's failure: the next call (or the next `count` calls) of the row's function
    // fails with the row's error text.
    void failNext();
    void failTimes(int count);
    void fail(const char* function, const vplc::Fault& fault);

    // What the driver published since the last call.
    Publications takePublished() {
        Publications since;
        const auto all = rig_.recorder().published();
        for (std::size_t i = taken_; i < all.size(); ++i) {
            since.emplace_back(all[i].id, all[i].bytes);
        }
        taken_ = all.size();
        return since;
    }

    uint8_t digitalOnBus() const {
        return rig_.plant().digitalOutputsOnBus(DriverRig::kDigitalPosition);
    }
    uint8_t digitalInGds() const {
        return rig_.plant().outputsInGds(DriverRig::kDigitalPosition).at(0);
    }
    uint16_t analogOnBus(int channel) const {
        return rig_.plant().analogOutputOnBus(DriverRig::kAnalogPosition, channel);
    }
    uint16_t analogInGds(int channel) const {
        const auto bytes = rig_.plant().outputsInGds(DriverRig::kAnalogPosition);
        const auto at = static_cast<std::size_t>(2 * channel);
        return static_cast<uint16_t>((bytes.at(at) << 8) | bytes.at(at + 1));
    }

    void setDigitalInput(bool on) {
        rig_.plant().setDigitalInput(DriverRig::kDigitalPosition, 3, on);
    }
    void deliver(uint32_t id, uint8_t value) { rig_.deliver(id, {value}); }
    void deliverFloat(uint32_t id, float value) { rig_.deliverFloat(id, value); }
    int calls(const char* function) const { return rig_.plant().calls(function); }

    // Delivers a restart event and returns the exception it let out, as "type: message".
    std::string restartFailure();

    DriverRig& rig() { return rig_; }

private:
    const FaultRow& row_;
    DriverRig& rig_;
    std::size_t taken_ = 0;
};

}  // namespace faultmatrix
