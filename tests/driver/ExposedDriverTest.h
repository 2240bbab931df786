// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "ExposedDriver.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"
#include "hosting/DriverRig.h"
#include "hosting/LoggedLine.h"
#include "modules/INumberedPinModule.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

namespace drivertest {

// A test that makes its driver directly, so that it can look at the driver's tables and hand it a
// module of its own, with the recorder, clock and bus of a rig.
class ExposedDriverTest : public ::testing::Test {
protected:
    // Makes the driver (with `module` in place of the one it would make, if given), initialises
    // it and waits until its thread, if it started one, is paused, held or ended.
    testsupport::ExposedDriver& start(const hosting::DriverConfig& config,
                                      INumberedPinModule* module = nullptr);

    // The lines the test's driver logged.
    std::vector<hosting::LoggedLine> logs() const;

    hosting::DriverRig rig_;
    orbel::Recorder& recorder_ = rig_.recorder();
    vplc::VirtualClock& clock_ = rig_.clock();
    vplc::Station& station_ = rig_.station();
    hosting::DriverPtr<testsupport::ExposedDriver> driver_;
};

}  // namespace drivertest
