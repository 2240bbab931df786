// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "FakeScanner.h"
#include "orbel/DriverThreads.h"
#include "orbel/PauseClock.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using clocktest::FakeScanner;
using vplc::Module;
using vplc::Station;
using vplc::VirtualClock;
using namespace std::chrono_literals;

namespace {

using Timeline = std::vector<std::pair<std::string, VirtualClock::Duration>>;

std::vector<std::pair<VirtualClock::Duration, VirtualClock::Duration>> startsAndDurations(
    const std::vector<VirtualClock::Pause>& pauses) {
    std::vector<std::pair<VirtualClock::Duration, VirtualClock::Duration>> result;
    for (const auto& pause : pauses) {
        result.emplace_back(pause.start, pause.duration);
    }
    return result;
}

class VirtualTime : public ::testing::Test {
protected:
    // Records which scanner scanned at what virtual time.
    std::function<void()> logScanOf(std::string name) {
        return [this, name] {
            std::lock_guard lock(timelineMutex_);
            timeline_.emplace_back(name, clock_.now());
        };
    }
    Timeline timeline() {
        std::lock_guard lock(timelineMutex_);
        return timeline_;
    }

    VirtualClock clock_;
    Station station_ = Station::of({Module::DI8_DO8});
    std::mutex timelineMutex_;
    Timeline timeline_;
};

}  // namespace

TEST(VirtualClock, IsThePauseClockWhileItLives) {
    {
        VirtualClock clock;
        EXPECT_EQ(orbel::pauseClock(), &clock);
        EXPECT_THROW(VirtualClock(), std::logic_error);
    }
    EXPECT_EQ(orbel::pauseClock(), nullptr);
}

TEST_F(VirtualTime, StartsAtZeroAndStandsStillUntilTheTestRunsIt) {
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    clock_.settle();

    EXPECT_EQ(clock_.now(), 0ns);
    EXPECT_EQ(scanner.scans(), 1);
    EXPECT_EQ(clock_.pausedThreads(), 1);
}

TEST_F(VirtualTime, PausesAreRecordedWithTheirDriverStartAndDuration) {
    FakeScanner scanner(2, 100ms);
    scanner.initialize();
    clock_.settle();
    ASSERT_EQ(clock_.pauses().size(), 1u);
    EXPECT_EQ(clock_.pauses()[0].driver, static_cast<const CSI_base*>(&scanner));

    clock_.runUntil(5ms);

    EXPECT_EQ(startsAndDurations(clock_.pauses()),
              (std::vector<std::pair<VirtualClock::Duration, VirtualClock::Duration>>{
                  {0ms, 1ms}, {1ms, 1ms}, {2ms, 100ms}}));
    EXPECT_EQ(scanner.scans(), 1);
    EXPECT_EQ(clock_.now(), 5ms);
}

TEST_F(VirtualTime, PausesAreNotRecordedOnceTheRecordIsTurnedOff) {
    FakeScanner scanner(2, 100ms);
    scanner.initialize();
    clock_.settle();
    ASSERT_EQ(clock_.pauses().size(), 1u);

    clock_.keepPauses(false);
    clock_.runUntil(305ms);

    EXPECT_TRUE(clock_.pauses().empty());
    EXPECT_EQ(scanner.scans(), 4);
}

TEST_F(VirtualTime, AThreadDueExactlyAtTheEndOfARunStaysPaused) {
    FakeScanner scanner(0, 100ms);
    scanner.initialize();

    clock_.runUntil(100ms);
    EXPECT_EQ(scanner.scans(), 1);

    clock_.runFor(1ns);
    EXPECT_EQ(scanner.scans(), 2);
}

TEST_F(VirtualTime, WhatATestDoesAtAWakeTimeHappensBeforeTheThreadWakes) {
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    clock_.runUntil(100ms);

    station_.setDigitalInputs(1, 0x5A);
    EXPECT_EQ(station_.inputsInGds(1), (std::vector<uint8_t>{0x00}));
    clock_.runFor(1ns);

    EXPECT_EQ(station_.inputsInGds(1), (std::vector<uint8_t>{0x5A}));
}

TEST_F(VirtualTime, ThreadsWakeInTheOrderOfTheirWakeTimes) {
    FakeScanner fast(0, 30ms, logScanOf("fast"));
    FakeScanner slow(0, 50ms, logScanOf("slow"));
    fast.initialize();
    clock_.settle();
    slow.initialize();

    clock_.runUntil(140ms);

    EXPECT_EQ(timeline(), (Timeline{{"fast", 0ms},
                                    {"slow", 0ms},
                                    {"fast", 30ms},
                                    {"slow", 50ms},
                                    {"fast", 60ms},
                                    {"fast", 90ms},
                                    {"slow", 100ms},
                                    {"fast", 120ms}}));
}

TEST_F(VirtualTime, RunNextStopsAfterTheThreadsOfTheNextWakeTimeBeforeItsLimit) {
    FakeScanner fast(0, 30ms, logScanOf("fast"));
    fast.initialize();
    clock_.settle();

    EXPECT_EQ(clock_.runNext(100ms), 30ms);
    EXPECT_EQ(timeline(), (Timeline{{"fast", 0ms}, {"fast", 30ms}}));
    EXPECT_EQ(clock_.runNext(50ms), 50ms);
    EXPECT_EQ(clock_.runNext(60ms), 60ms);  // the thread due at the limit stays paused
    EXPECT_EQ(timeline().size(), 2U);
    EXPECT_EQ(clock_.runNext(61ms), 60ms);
    EXPECT_EQ(timeline().back(), (std::pair<std::string, VirtualClock::Duration>{"fast", 60ms}));
    EXPECT_THROW(clock_.runNext(10ms), std::invalid_argument);
}

TEST_F(VirtualTime, CannotRunBackInTime) {
    clock_.runUntil(10ms);

    EXPECT_THROW(clock_.runUntil(5ms), std::invalid_argument);
    EXPECT_EQ(clock_.now(), 10ms);
}

TEST_F(VirtualTime, AHeldScanWaitsAtTheGateBeforeItCopies) {
    clock_.holdScans(true);
    station_.setDigitalInputs(1, 0x0F);
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    clock_.settle();

    EXPECT_EQ(clock_.heldThreads(), 1);
    EXPECT_EQ(scanner.scans(), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_ReadFromAxioToGds"), 0);
    EXPECT_EQ(station_.inputsInGds(1), (std::vector<uint8_t>{0x00}));
}

TEST_F(VirtualTime, ReleasingAScanLetsTheThreadThroughForThatOneScan) {
    clock_.holdScans(true);
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    station_.setDigitalInputs(1, 0x0F);

    EXPECT_EQ(clock_.releaseScan(), 1);
    EXPECT_EQ(scanner.scans(), 1);
    EXPECT_EQ(station_.inputsInGds(1), (std::vector<uint8_t>{0x0F}));
    EXPECT_EQ(clock_.pausedThreads(), 1);
    EXPECT_EQ(clock_.releaseScan(), 0);

    clock_.runFor(250ms);
    EXPECT_EQ(clock_.heldThreads(), 1);
    EXPECT_EQ(scanner.scans(), 1);

    EXPECT_EQ(clock_.releaseScan(), 1);
    EXPECT_EQ(scanner.scans(), 2);
}

TEST_F(VirtualTime, ReleasingAScanReleasesEveryHeldThread) {
    clock_.holdScans(true);
    FakeScanner first(0, 100ms);
    FakeScanner second(0, 100ms);
    first.initialize();
    second.initialize();

    EXPECT_EQ(clock_.releaseScan(), 2);
    EXPECT_EQ(first.scans() + second.scans(), 2);
}

TEST_F(VirtualTime, EndingTheHoldLetsTheHeldThreadsGoOn) {
    clock_.holdScans(true);
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    clock_.settle();

    clock_.holdScans(false);

    EXPECT_EQ(clock_.heldThreads(), 0);
    EXPECT_EQ(scanner.scans(), 1);
    clock_.runFor(101ms);
    EXPECT_EQ(scanner.scans(), 2);
}

TEST_F(VirtualTime, AHostThreadPassesTheGate) {
    clock_.holdScans(true);
    station_.setDigitalInputs(1, 0x77);

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(station_.inputsInGds(1), (std::vector<uint8_t>{0x77}));
    EXPECT_EQ(clock_.heldThreads(), 0);
}

TEST_F(VirtualTime, EndingAPausedThreadEndsItWithoutMovingTime) {
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    clock_.settle();

    orbel::endDriverThread(scanner);

    EXPECT_EQ(clock_.pausedThreads(), 0);
    EXPECT_EQ(clock_.now(), 0ns);
    clock_.runFor(1s);
    EXPECT_EQ(scanner.scans(), 1);
}

TEST_F(VirtualTime, EndingAHeldThreadEndsItAtTheGateBeforeItsScan) {
    clock_.holdScans(true);
    FakeScanner scanner(0, 100ms);
    scanner.initialize();
    clock_.settle();

    orbel::endDriverThread(scanner);

    EXPECT_EQ(clock_.heldThreads(), 0);
    EXPECT_EQ(clock_.releaseScan(), 0);
    EXPECT_EQ(scanner.scans(), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_ReadFromAxioToGds"), 0);
}

// On fibers, a driver's thread ends only while the clock runs it: a join would wait for ever.
TEST(VirtualClock, JoiningADriverFiberThatIsPausedIsRefused) {
    VirtualClock clock(VirtualClock::Mode::Fibers);
    auto station = Station::of({Module::DI8_DO8});
    clocktest::FakeScanner scanner(0, std::chrono::milliseconds(100));
    scanner.initialize();
    clock.settle();

    EXPECT_THROW(scanner.joinThread(), std::logic_error);
    EXPECT_EQ(scanner.scans(), 1);
}
