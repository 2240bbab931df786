// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "FaultRow.h"
#include "hosting/DriverRig.h"
#include "vplc/Station.h"

namespace faultmatrix {

using hosting::DriverRig;

// A row's driver on the rig, and what the row's steps remember between them.
class Scenario {
public:
    Scenario(const FaultRow& row, DriverRig& rig) : row_(row), rig_(rig) {}

    const FaultRow& row() const { return row_; }
    DriverRig& rig() { return rig_; }
    vplc::Station& station() { return rig_.station(); }

    // What the driver published since the last call.
    Publications takePublished();

    void markCalls(const std::string& function) { marks_[function] = station().calls(function); }
    int callsSinceMark(const std::string& function) {
        return station().calls(function) - marks_.at(function);
    }

private:
    const FaultRow& row_;
    DriverRig& rig_;
    std::size_t taken_ = 0;
    std::map<std::string, int> marks_;
};

}  // namespace faultmatrix
