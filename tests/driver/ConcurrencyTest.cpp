// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>

#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"

namespace host = hosting::host;
using hosting::DriverConfig;
using namespace std::chrono_literals;

TEST(Concurrency, OutputEventsOnAHostThreadRunAlongsideTheScanOfTheDriverThread) {
    hosting::DriverRig rig({vplc::Module::DI8_DO8});
    auto& clock = rig.clock();
    auto& station = rig.station();
    CSI_base& driver = rig.create(DriverConfig::digital()
                                      .digitalIn(1, "0")
                                      .digitalIn(2, "5")
                                      .digitalOut(3, "1", "0")
                                      .digitalOut(4, "6", "0"));
    host::initialize(driver);
    clock.settle();

    constexpr int kEvents = 400;
    std::thread host([&] {
        for (int i = 0; i < kEvents; ++i) {
            host::deliver(driver, i % 2 == 0 ? 3 : 4, {static_cast<uint8_t>(i / 2 % 2 == 0)});
        }
    });
    constexpr int kScans = 40;
    for (int scan = 0; scan < kScans; ++scan) {
        station.setDigitalInput(1, 0, scan % 2 == 0);
        clock.runFor(100ms);
    }
    host.join();

    // The last two events switched pins 1 and 6 off; every pass saw input 0 change.
    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x00);
    EXPECT_EQ(rig.recorder().published(&driver).size(), 2u + kScans);
    EXPECT_TRUE(rig.recorder().stops().empty());
    EXPECT_EQ(station.openLocks(), 0);
    EXPECT_EQ(station.unmatchedEnds(), 0);
}
