// SPDX-License-Identifier: MIT
// usleep, sleep and clock_nanosleep are pause points like nanosleep: on a driver thread they pause
// on the host's clock (a driver on a fiber that slept for real would stop every other driver on
// the host's thread), on any other thread they sleep in real time.

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "StepClock.h"
#include "TestDriver.h"

using hosttest::driverParams;
using hosttest::TestDriver;
using testsupport::StepClock;

namespace {

constexpr long long kNanosecondsPerSecond = 1'000'000'000;

long long nanosecondsOf(const timespec& time) {
    return static_cast<long long>(time.tv_sec) * kNanosecondsPerSecond + time.tv_nsec;
}

struct SleepCall {
    const char* name;
    std::function<int()> call;  // the call's result as an int
    long long pause;            // the pause it asks for, in nanoseconds
};

std::ostream& operator<<(std::ostream& out, const SleepCall& call) {
    return out << call.name;
}

int clockNanosleepRelative() {
    const timespec request{1, 5};
    return clock_nanosleep(CLOCK_MONOTONIC, 0, &request, nullptr);
}

// A call made on a driver thread with a pause clock installed: its result, once the clock has ended
// the pause it asked for, and the pauses the clock was asked for.
struct PausedCall {
    int result = -2;
    std::vector<timespec> requests;
};

PausedCall callOnADriverThread(const std::function<int()>& call) {
    StepClock clock;
    PausedCall paused;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) { paused.result = call(); });
    driver.initialize();
    EXPECT_TRUE(clock.waitForPauses(1));
    clock.release();
    driver.joinThread();
    paused.requests = clock.requests();
    return paused;
}

class SleepCalls : public ::testing::TestWithParam<SleepCall> {};

TEST_P(SleepCalls, OnADriverThreadPauseOnTheHostsClockForTheRequestedTime) {
    const PausedCall paused = callOnADriverThread(GetParam().call);

    EXPECT_EQ(paused.result, 0);
    ASSERT_EQ(paused.requests.size(), 1U);
    EXPECT_EQ(nanosecondsOf(paused.requests[0]), GetParam().pause);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, SleepCalls,
    ::testing::Values(
        SleepCall{"usleep", [] { return usleep(2'500); }, 2'500'000},
        SleepCall{"sleep", [] { return static_cast<int>(sleep(3)); }, 3 * kNanosecondsPerSecond},
        SleepCall{"clock_nanosleep", clockNanosleepRelative, kNanosecondsPerSecond + 5}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SleepCall, AnAbsoluteClockNanosleepOnADriverThreadPausesOnTheHostsClockUntilTheDeadline) {
    constexpr long long kAhead = 2 * kNanosecondsPerSecond;
    const PausedCall paused = callOnADriverThread([] {
        timespec deadline{};
        clock_gettime(CLOCK_MONOTONIC, &deadline);
        deadline.tv_sec += kAhead / kNanosecondsPerSecond;
        return clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr);
    });

    EXPECT_EQ(paused.result, 0);
    ASSERT_EQ(paused.requests.size(), 1U);
    // What is left of the two seconds once the call has read the clock.
    EXPECT_LE(nanosecondsOf(paused.requests[0]), kAhead);
    EXPECT_GT(nanosecondsOf(paused.requests[0]), kAhead / 2);
}

TEST(SleepCall, AnInvalidClockNanosleepOnADriverThreadFailsWithEinvalAndDoesNotPause) {
    StepClock clock;
    int result = 0;
    TestDriver driver(driverParams("IO1"), [&](TestDriver&) {
        const timespec request{0, kNanosecondsPerSecond};
        result = clock_nanosleep(CLOCK_MONOTONIC, 0, &request, nullptr);
    });

    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(result, EINVAL);
    EXPECT_TRUE(clock.requests().empty());
}

TEST(SleepCall, OnAHostThreadTheySleepInRealTimeEvenWithAPauseClockInstalled) {
    StepClock clock;
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    const int slept = usleep(1'000);
    const timespec request{0, 1'000'000};
    const int clockSlept = clock_nanosleep(CLOCK_MONOTONIC, 0, &request, nullptr);
    const unsigned int notSlept = sleep(0);
    clock_gettime(CLOCK_MONOTONIC, &after);

    EXPECT_EQ(slept, 0);
    EXPECT_EQ(clockSlept, 0);
    EXPECT_EQ(notSlept, 0U);
    EXPECT_GE(nanosecondsOf(after) - nanosecondsOf(before), 2'000'000);
    EXPECT_TRUE(clock.requests().empty());
}

}  // namespace
