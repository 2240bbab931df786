// SPDX-License-Identifier: MIT
// Drivers made, initialised, run briefly and deleted a thousand times, with their scan thread
// alive at deletion: no thread, GDS buffer, frame lock or allocation outlives its driver, except
// the input payload buffers that the driver keeps on purpose (the one leak suppression).

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Sanitizers.h"
#include "hosting/ChildProcess.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

#if AXL_TEST_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

using hosting::DriverConfig;
using hosting::DriverRig;
namespace host = hosting::host;
using namespace std::chrono_literals;

namespace {

constexpr int kCycles = 1000;

// The configurations the cycles go through: both modules with inputs and outputs, one without
// inputs, one that stops during initialisation, and one without a module.
std::vector<DriverConfig> configurations() {
    return {
        DriverConfig::digital(1)
            .digitalIn(10, "0")
            .digitalIn(11, "7")
            .digitalOut(20, "3", "1")
            .digitalOut(21, "4", "0")
            .restart(90),
        DriverConfig::analog(2).analogIn(30, "0").analogIn(31, "1").analogOut(40, "1", "5"),
        DriverConfig::digital(1).digitalOut(20, "0", "1"),
        DriverConfig::digital(1).digitalIn(10, "2").digitalIn(11, "9"),
        DriverConfig("AXL_F_DI8_1_DO8_1 ", "1"),
    };
}

// Checks what every cycle must leave behind: nothing of the driver.
void expectNothingLeft(const vplc::Station& station, const orbel::Recorder& recorder) {
    EXPECT_EQ(station.buffersHeld(), 0);
    EXPECT_EQ(station.openLocks(), 0);
    EXPECT_EQ(recorder.threadExits().size(), recorder.threadStarts().size());
}

void expectNoLeak() {
#if AXL_TEST_ADDRESS_SANITIZER
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0);
#endif
}

}  // namespace

namespace {

// The threads of this process, once the tasks of joined threads have left it. A joined thread's
// task can outlive the join for a moment (under qemu-user, the emulator finishes the thread after
// the guest's join has returned), so the count is read again until it is down to `expected`, for
// at most a minute, which only a thread that is really left over takes (a loaded machine under a
// sanitizer or an emulator takes milliseconds): it still shows.
int threadsOnceEndedOnesHaveGone(int expected) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int threads = hosting::threadsOfThisProcess();
    while (threads > expected && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
        threads = hosting::threadsOfThisProcess();
    }
    return threads;
}

}  // namespace

TEST(Teardown, AThousandCyclesOnVirtualTimeEndEveryThreadAndReleaseEveryBuffer) {
    DriverRig rig;
    vplc::VirtualClock& clock = rig.clock();
    vplc::Station& station = rig.station();
    const std::vector<DriverConfig> records = configurations();
    int threadsAfterFirstCycle = 0;

    for (int cycle = 0; cycle < kCycles; ++cycle) {
        SCOPED_TRACE("cycle " + std::to_string(cycle));
        const DriverConfig& config = records[static_cast<std::size_t>(cycle) % records.size()];
        // Every third cycle the thread is deleted while it waits at a scan start, the others
        // while it pauses somewhere in its initial publication or its scans.
        const bool holdAtGate = cycle % 3 == 0;
        clock.holdScans(holdAtGate);
        CSI_base& driver = rig.create(config);
        host::initialize(driver);
        if (holdAtGate) {
            for (int scan = 0; scan < cycle % 4; ++scan) {
                clock.releaseScan();
            }
        } else {
            clock.runFor(std::chrono::milliseconds(cycle % 7 * 37));
        }
        host::deliver(driver, 20, {static_cast<uint8_t>(cycle % 2)});
        station.setDigitalInput(1, 0, cycle % 5 == 0);
        station.setAnalogInput(2, 1, static_cast<uint16_t>(cycle * 61));
        rig.destroy();
        expectNothingLeft(station, rig.recorder());
        if (cycle == 0) {
            threadsAfterFirstCycle = hosting::threadsOfThisProcess();
        }
    }
    clock.holdScans(false);

    EXPECT_EQ(threadsOnceEndedOnesHaveGone(threadsAfterFirstCycle), threadsAfterFirstCycle);
    EXPECT_GE(rig.recorder().threadStarts().size(), static_cast<std::size_t>(kCycles / 2));
    expectNoLeak();
}

TEST(Teardown, CyclesOnTheWallClockEndThreadsThatSleepOrScanAtDeletion) {
    orbel::Recorder recorder;
    vplc::Station station = vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    const DriverConfig config = configurations()[0];
    int threadsAfterFirstCycle = 0;

    for (int cycle = 0; cycle < 50; ++cycle) {
        SCOPED_TRACE("cycle " + std::to_string(cycle));
        // A new driver may take the place of the last one in memory; only its own records count.
        recorder.clear();
        {
            auto driver = host::create(config);
            host::initialize(*driver);
            // Deleted after its first or its second publication: the thread is then in a real
            // pause, still publishing, or on its way into the scans.
            const CSI_base* self = driver.get();
            const std::size_t publications = 1 + static_cast<std::size_t>(cycle % 2);
            ASSERT_TRUE(recorder.waitUntil(
                [&] { return recorder.published(self).size() >= publications; }));
            host::deliver(*driver, 21, {1});
        }
        EXPECT_EQ(recorder.threadStarts().size(), 1u);
        expectNothingLeft(station, recorder);
        if (cycle == 0) {
            threadsAfterFirstCycle = hosting::threadsOfThisProcess();
        }
    }

    EXPECT_EQ(threadsOnceEndedOnesHaveGone(threadsAfterFirstCycle), threadsAfterFirstCycle);
    expectNoLeak();
}
