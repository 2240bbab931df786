// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>

#include "hosting/DriverConfig.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "vplc/Plant.h"
#include "vplc/VirtualClock.h"

namespace host = hosting::host;
using hosting::DriverConfig;
using namespace std::chrono_literals;

TEST(Concurrency, OutputEventsOnAHostThreadRunAlongsideTheScanOfTheDriverThread) {
    orbel::Recorder recorder;
    vplc::VirtualClock clock;
    auto plant = vplc::Plant::of({vplc::Module::DI8_DO8});
    auto driver = host::create(DriverConfig::digital()
                                   .digitalIn(1, "0")
                                   .digitalIn(2, "5")
                                   .digitalOut(3, "1", "0")
                                   .digitalOut(4, "6", "0"));
    host::initialize(*driver);
    clock.settle();

    constexpr int kEvents = 400;
    std::thread host([&] {
        for (int i = 0; i < kEvents; ++i) {
            host::deliver(*driver, i % 2 == 0 ? 3 : 4, {static_cast<uint8_t>(i / 2 % 2 == 0)});
        }
    });
    constexpr int kScans = 40;
    for (int scan = 0; scan < kScans; ++scan) {
        plant.setDigitalInput(1, 0, scan % 2 == 0);
        clock.runFor(100ms);
    }
    host.join();

    // The last two events switched pins 1 and 6 off; every pass saw input 0 change.
    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x00);
    EXPECT_EQ(recorder.published(driver.get()).size(), 2u + kScans);
    EXPECT_TRUE(recorder.stops().empty());
    EXPECT_EQ(plant.openLocks(), 0);
    EXPECT_EQ(plant.unmatchedEnds(), 0);
}
