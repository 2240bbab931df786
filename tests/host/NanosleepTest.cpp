// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <optional>
#include <thread>

#include "StepClock.h"
#include "TestDriver.h"
#include "orbel/Recorder.h"

using hosttest::driverParams;
using hosttest::TestDriver;
using testsupport::StepClock;

namespace {

void doNothing(int) {}

// A handler installed without SA_RESTART, so that the signal interrupts a sleep.
void interruptSleepsWithSigusr1() {
    struct sigaction action {};
    action.sa_handler = doNothing;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;
    ASSERT_EQ(sigaction(SIGUSR1, &action, nullptr), 0);
}

struct SleepOutcome {
    int result = 0;
    int error = 0;
    timespec remaining{};
};

// Hands a sleep's outcome from the sleeping thread to the test.
class OutcomeSlot {
public:
    void set(const SleepOutcome& outcome) {
        {
            std::lock_guard lock(mutex_);
            outcome_ = outcome;
        }
        changed_.notify_all();
    }

    // Signals `thread` until the outcome is there: a signal that arrives before the thread
    // sleeps is lost, the next one finds it asleep.
    SleepOutcome interruptUntilSet(pthread_t thread) {
        std::unique_lock lock(mutex_);
        while (!outcome_) {
            pthread_kill(thread, SIGUSR1);
            changed_.wait_for(lock, std::chrono::milliseconds(5));
        }
        return *outcome_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<SleepOutcome> outcome_;
};

SleepOutcome sleepFor(time_t seconds, long nanoseconds) {
    SleepOutcome outcome;
    const timespec request{seconds, nanoseconds};
    outcome.remaining = timespec{-1, -1};
    outcome.result = nanosleep(&request, &outcome.remaining);
    outcome.error = errno;
    return outcome;
}

long long nanosecondsOf(const timespec& time) {
    return static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

// The signal comes within milliseconds of the start of a five-second sleep. The kernel counts
// the remaining time to the timer's latest expiry, which its timer slack (50 us by default) may
// put a little after the requested end.
void expectMostOfFiveSecondsRemain(const timespec& remaining) {
    EXPECT_GT(nanosecondsOf(remaining), 4'000'000'000LL);
    EXPECT_LT(nanosecondsOf(remaining), 5'001'000'000LL);
}

}  // namespace

TEST(Nanosleep, OnAHostThreadASignalInterruptsItWithEintrAndTheRemainingTime) {
    interruptSleepsWithSigusr1();
    OutcomeSlot slot;
    std::thread sleeper([&] { slot.set(sleepFor(5, 0)); });

    const SleepOutcome outcome = slot.interruptUntilSet(sleeper.native_handle());
    sleeper.join();

    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.error, EINTR);
    expectMostOfFiveSecondsRemain(outcome.remaining);
}

TEST(Nanosleep, OnAHostThreadItSleepsAtLeastTheRequestedTime) {
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    const SleepOutcome outcome = sleepFor(0, 2'000'000);
    clock_gettime(CLOCK_MONOTONIC, &after);

    EXPECT_EQ(outcome.result, 0);
    EXPECT_GE(nanosecondsOf(after) - nanosecondsOf(before), 2'000'000);
}

TEST(Nanosleep, OnAHostThreadAnInvalidNanosecondCountFailsWithEinval) {
    const SleepOutcome tooMany = sleepFor(0, 1'000'000'000);
    const SleepOutcome negative = sleepFor(0, -1);

    EXPECT_EQ(tooMany.result, -1);
    EXPECT_EQ(tooMany.error, EINVAL);
    EXPECT_EQ(negative.result, -1);
    EXPECT_EQ(negative.error, EINVAL);
}

TEST(Nanosleep, OnAHostThreadItSleepsInRealTimeEvenWithAPauseClockInstalled) {
    StepClock clock;

    const SleepOutcome outcome = sleepFor(0, 1'000'000);

    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(clock.requests().empty());
}

TEST(Nanosleep, OnADriverThreadWithoutAClockASignalInterruptsItWithEintrAndTheRemainingTime) {
    interruptSleepsWithSigusr1();
    orbel::Recorder recorder;
    OutcomeSlot slot;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) { slot.set(sleepFor(5, 0)); });
    driver.initialize();
    ASSERT_TRUE(recorder.waitUntil([&] { return !recorder.threadStarts(&driver).empty(); }));

    const SleepOutcome outcome = slot.interruptUntilSet(recorder.threadStarts(&driver)[0].handle);
    driver.joinThread();

    EXPECT_EQ(outcome.result, -1);
    EXPECT_EQ(outcome.error, EINTR);
    expectMostOfFiveSecondsRemain(outcome.remaining);
}

TEST(Nanosleep, OnADriverThreadWithoutAClockItSleepsAtLeastTheRequestedTime) {
    long long slept = 0;
    int result = -2;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        timespec before{};
        timespec after{};
        clock_gettime(CLOCK_MONOTONIC, &before);
        result = sleepFor(0, 2'000'000).result;
        clock_gettime(CLOCK_MONOTONIC, &after);
        slept = nanosecondsOf(after) - nanosecondsOf(before);
    });

    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(result, 0);
    EXPECT_GE(slept, 2'000'000);
}
