// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "StepClock.h"
#include "TestDriver.h"
#include "orbel/DriverThreads.h"
#include "orbel/HostObserver.h"
#include "orbel/Recorder.h"

using hosttest::driverParams;
using hosttest::pauseLikeTheDriver;
using hosttest::TestDriver;
using testsupport::StepClock;

namespace {

constexpr long kScanPause = 100'000'000;

// The scan of a driver: every round touches the driver, then pauses 100 ms.
void scanForEver(TestDriver& driver) {
    for (;;) {
        ++driver.rounds;
        EXPECT_FALSE(driver.params().sServiceName.empty());
        pauseLikeTheDriver(0, kScanPause);
    }
}

std::vector<std::string> howThreadsEnded(const orbel::Recorder& recorder, const CSI_base* driver) {
    std::vector<std::string> hows;
    for (const auto& exit : recorder.threadExits(driver)) {
        hows.push_back(exit.how);
    }
    return hows;
}

using Strings = std::vector<std::string>;

// A driver whose thread base comes first, so that its CSI_base part does not start the object.
class ThreadBaseFirstDriver : private CPosixThread, public CSI_base {
public:
    ThreadBaseFirstDriver() : CPosixThread(0), CSI_base(driverParams("IO9"), {}, {}) {}
    void onReceiveEvent(stEventParams_t) override {}
    void initialize() override { start(); }
    void run() override { pauseLikeTheDriver(60, 0); }
};

}  // namespace

TEST(DriverThread, StartRunsRunOnceOnAnotherThread) {
    orbel::Recorder recorder;
    std::atomic<int> calls{0};
    std::thread::id runThread;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        ++calls;
        runThread = std::this_thread::get_id();
    });

    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(calls, 1);
    EXPECT_NE(runThread, std::this_thread::get_id());
    const auto starts = recorder.threadStarts(&driver);
    ASSERT_EQ(starts.size(), 1u);
    EXPECT_EQ(starts[0].thread, runThread);
    EXPECT_EQ(howThreadsEnded(recorder, &driver), Strings{"run() returned"});
}

TEST(DriverThread, AThreadIsTheDriversAlsoWhenTheThreadBaseComesFirst) {
    orbel::Recorder recorder;
    ThreadBaseFirstDriver driver;
    const CSI_base* identity = &driver;
    ASSERT_NE(static_cast<const void*>(identity), static_cast<const void*>(&driver));

    driver.initialize();
    orbel::endDriverThread(driver);

    EXPECT_EQ(recorder.threadStarts(identity).size(), 1u);
    EXPECT_EQ(howThreadsEnded(recorder, identity), Strings{"ended by the host"});
}

TEST(DriverThread, OnlyTheStartedThreadIsADriverThreadOwnedByItsDriver) {
    bool isDriverThread = false;
    const CSI_base* owner = nullptr;
    bool endRequested = true;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        isDriverThread = orbel::isDriverThread();
        owner = orbel::currentThreadDriver();
        endRequested = orbel::endRequested();
    });

    driver.initialize();
    driver.joinThread();

    EXPECT_TRUE(isDriverThread);
    EXPECT_EQ(owner, &driver);
    EXPECT_FALSE(endRequested);
    EXPECT_FALSE(orbel::isDriverThread());
    EXPECT_EQ(orbel::currentThreadDriver(), nullptr);
    EXPECT_NO_THROW(orbel::endIfRequested());
}

TEST(DriverThread, AnExceptionLeavingRunEndsTheThreadQuietlyWithItsText) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"),
                      [](TestDriver&) { throw std::runtime_error("scan failed"); });

    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(howThreadsEnded(recorder, &driver), Strings{"scan failed"});
}

TEST(DriverThread, EndingAThreadSleepingInRealTimeReturnsLongBeforeTheSleepIsOver) {
    orbel::Recorder recorder;
    std::promise<void> sleeping;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        sleeping.set_value();
        pauseLikeTheDriver(60, 0);
    });
    driver.initialize();
    sleeping.get_future().wait();

    const auto before = std::chrono::steady_clock::now();
    orbel::endDriverThread(driver);
    const auto took = std::chrono::steady_clock::now() - before;

    EXPECT_LT(took, std::chrono::seconds(10));
    EXPECT_EQ(howThreadsEnded(recorder, &driver), Strings{"ended by the host"});
}

TEST(DriverThread, EndingAThreadPausedOnThePauseClockEndsItAndTellsTheClock) {
    orbel::Recorder recorder;
    StepClock clock;
    TestDriver driver(driverParams("IO1"), scanForEver);
    driver.initialize();
    ASSERT_TRUE(clock.waitForPauses(1));

    orbel::endDriverThread(driver);

    EXPECT_EQ(howThreadsEnded(recorder, &driver), Strings{"ended by the host"});
    EXPECT_EQ(clock.started(), 1);
    EXPECT_EQ(clock.ended(), 1);
    ASSERT_EQ(clock.requests().size(), 1u);
    EXPECT_EQ(clock.requests()[0].tv_sec, 0);
    EXPECT_EQ(clock.requests()[0].tv_nsec, kScanPause);
}

TEST(DriverThread, APauseThatTheClockCompletesReturnsZero) {
    StepClock clock;
    int result = -2;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        timespec pause{0, 1'000'000};
        result = nanosleep(&pause, &pause);
    });
    driver.initialize();
    ASSERT_TRUE(clock.waitForPauses(1));

    clock.release();
    driver.joinThread();

    EXPECT_EQ(result, 0);
}

TEST(DriverThread, APauseWithAnInvalidNanosecondCountFailsWithEinvalAndDoesNotPause) {
    StepClock clock;
    int result = 0;
    int error = 0;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        timespec pause{0, 1'000'000'000};
        result = nanosleep(&pause, nullptr);
        error = errno;
    });

    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(result, -1);
    EXPECT_EQ(error, EINVAL);
    EXPECT_TRUE(clock.requests().empty());
}

TEST(DriverThread, EndingADriverWhoseThreadNeverStartedReturnsAtOnce) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"), scanForEver);

    orbel::endDriverThread(driver);

    EXPECT_TRUE(recorder.threadExits().empty());
}

TEST(DriverThread, EndingAThreadTwiceEndsItOnce) {
    orbel::Recorder recorder;
    StepClock clock;
    TestDriver driver(driverParams("IO1"), scanForEver);
    driver.initialize();

    orbel::endDriverThread(driver);
    orbel::endDriverThread(driver);

    EXPECT_EQ(howThreadsEnded(recorder, &driver), Strings{"ended by the host"});
    EXPECT_EQ(clock.ended(), 1);
}

TEST(DriverThread, DestroyingHundredsOfRunningDriversEndsEachThreadBeforeItsDriverGoes) {
    orbel::Recorder recorder;
    constexpr int kDrivers = 300;

    for (int i = 0; i < kDrivers; ++i) {
        auto* driver = new TestDriver(driverParams("IO1"), scanForEver);
        driver->initialize();
        orbel::destroyDriver(driver);
    }

    const auto exits = recorder.threadExits();
    ASSERT_EQ(exits.size(), static_cast<std::size_t>(kDrivers));
    for (const auto& exit : exits) {
        EXPECT_EQ(exit.how, "ended by the host");
    }
}

TEST(DriverThread, DestroyingHundredsOfDriversPausedOnThePauseClockEndsEachThread) {
    orbel::Recorder recorder;
    StepClock clock;
    constexpr int kDrivers = 300;

    for (int i = 0; i < kDrivers; ++i) {
        auto* driver = new TestDriver(driverParams("IO1"), scanForEver);
        driver->initialize();
        orbel::destroyDriver(driver);
    }

    EXPECT_EQ(recorder.threadExits().size(), static_cast<std::size_t>(kDrivers));
    EXPECT_EQ(clock.started(), kDrivers);
    EXPECT_EQ(clock.ended(), kDrivers);
}

TEST(DriverThread, DeletingADriverWhoseThreadRunsWarnsThenEndsTheThread) {
    orbel::Recorder recorder;
    std::promise<void> running;
    auto* driver = new TestDriver(driverParams("IO1"), [&running](TestDriver&) {
        running.set_value();
        pauseLikeTheDriver(60, 0);
    });
    const CSI_base* identity = driver;
    driver->initialize();
    running.get_future().wait();

    delete driver;

    const auto logs = recorder.logs(identity);
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].level, orbel::kHostWarningLevel);
    EXPECT_EQ(logs[0].text,
              "A driver object was deleted while its thread was running; the host ends the "
              "thread.");
    EXPECT_EQ(howThreadsEnded(recorder, identity), Strings{"ended by the host"});
}

TEST(DriverThread, DeletingADriverWhoseThreadHasReturnedWarnsOfNothing) {
    orbel::Recorder recorder;
    auto* driver = new TestDriver(driverParams("IO1"), [](TestDriver&) {});
    const CSI_base* identity = driver;
    driver->initialize();
    ASSERT_TRUE(recorder.waitUntil([&] { return !recorder.threadExits(identity).empty(); }));

    delete driver;

    EXPECT_TRUE(recorder.logs(identity).empty());
}

TEST(DriverThread, EndAllDriverThreadsEndsTheThreadOfEveryDriver) {
    orbel::Recorder recorder;
    StepClock clock;
    std::vector<std::unique_ptr<TestDriver>> drivers;
    for (const char* name : {"IO1", "IO2", "IO3"}) {
        drivers.push_back(std::make_unique<TestDriver>(driverParams(name), scanForEver));
    }
    for (auto& driver : drivers) {
        driver->initialize();
    }

    orbel::endAllDriverThreads();

    for (auto& driver : drivers) {
        EXPECT_EQ(howThreadsEnded(recorder, driver.get()), Strings{"ended by the host"});
    }
    EXPECT_EQ(clock.ended(), 3);
}

TEST(DriverThread, StartingAThreadThatStillRunsIsIgnoredWithAWarning) {
    orbel::Recorder recorder;
    StepClock clock;
    TestDriver driver(driverParams("IO1"), scanForEver);
    driver.initialize();

    driver.initialize();
    orbel::endDriverThread(driver);

    const auto logs = recorder.logs(&driver);
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].level, orbel::kHostWarningLevel);
    EXPECT_EQ(logs[0].text,
              "A driver thread was started while it was still running; the second start is "
              "ignored.");
    EXPECT_EQ(recorder.threadStarts(&driver).size(), 1u);
    EXPECT_EQ(clock.started(), 1);
}

TEST(DriverThread, AThreadThatHasEndedCanBeStartedAgain) {
    std::atomic<int> calls{0};
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) { ++calls; });

    driver.initialize();
    driver.joinThread();
    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(calls, 2);
}

TEST(DriverThread, JoinWithoutAStartedThreadReturnsAtOnce) {
    std::atomic<int> calls{0};
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) { ++calls; });

    driver.joinThread();

    EXPECT_EQ(calls, 0);
}
