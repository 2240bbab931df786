// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestRuns.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/run/ScenarioPlayer.h"

namespace {

using axlsim::Happening;
using axlsim::RunResult;
using axlsimtest::configFrom;
using axlsimtest::play;
using namespace std::chrono_literals;

// One digital input on pin 0 (event 100) and one output on pin 2 (event 200): the scan thread
// publishes the input at 0 ms, pauses 1 ms, and scans at 1, 101, 201, ... ms.
std::string digital(const std::string& scenario, const std::string& extra = "") {
    return R"({ "driver": { "name": "axl1", "serviceName": "IO1", "deviceType": "AXL_F_DI8_1_DO8_1",
                            "params": { "Consecutive Number": "1" } },
                "mappings": { "100": { "size": 1 }, "200": { "size": 1 }, "300": { "size": 1 } },
                "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0" } },
                              "2": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "2", "InitVal": "0" } },
                              "3": { "eventId": 300, "type": "RestartDevice" } },
                "scenario": )" +
           scenario + extra + "}";
}

struct Published {
    std::chrono::nanoseconds t;
    uint32_t id;
    std::vector<uint8_t> bytes;
    bool operator==(const Published&) const = default;
};

std::vector<Published> publications(const RunResult& run) {
    std::vector<Published> found;
    for (const Happening& happening : run.timeline) {
        if (const auto* publish = std::get_if<Happening::Publish>(&happening.what)) {
            found.push_back({happening.t, publish->id, publish->bytes});
        }
    }
    return found;
}

template <class Kind>
int count(const RunResult& run) {
    return static_cast<int>(
        std::count_if(run.timeline.begin(), run.timeline.end(),
                      [](const Happening& h) { return std::holds_alternative<Kind>(h.what); }));
}

TEST(ScenarioPlayer, AnInputChangedAtAScanTimeIsSeenByThatScan) {
    const RunResult run = play(configFrom(digital(
        R"([ { "at_ms": 101, "input": { "module": 1, "pin": 0, "value": 1 } }, { "at_ms": 300, "end": true } ])")));
    EXPECT_EQ(publications(run), (std::vector<Published>{{0ms, 100, {0}}, {101ms, 100, {1}}}));
}

TEST(ScenarioPlayer, AnInputSetAtZeroIsSeenByTheFirstPublication) {
    const RunResult run = play(configFrom(digital(
        R"([ { "at_ms": 0, "input": { "module": 1, "pin": 0, "value": 1 } }, { "at_ms": 50, "end": true } ])")));
    EXPECT_EQ(publications(run), (std::vector<Published>{{0ms, 100, {1}}}));
}

TEST(ScenarioPlayer, InitializeWritesTheInitialOutputsBeforeTheFirstPublication) {
    const RunResult run = play(configFrom(digital(R"([ { "at_ms": 10, "end": true } ])")));
    ASSERT_GE(run.timeline.size(), 3U);
    EXPECT_TRUE(std::holds_alternative<Happening::Log>(run.timeline[0].what));
    EXPECT_TRUE(std::holds_alternative<Happening::BusWrite>(run.timeline[1].what));
    EXPECT_TRUE(std::holds_alternative<Happening::Publish>(run.timeline[2].what));
}

TEST(ScenarioPlayer, AnOutputEventIsWrittenToTheBusAtItsTime) {
    const RunResult run = play(configFrom(digital(
        R"([ { "at_ms": 250, "event": { "id": 200, "value": 1 } }, { "at_ms": 300, "end": true } ])")));
    const auto& last = run.timeline.back();
    ASSERT_TRUE(std::holds_alternative<Happening::BusWrite>(last.what));
    EXPECT_EQ(last.t, 250ms);
    EXPECT_EQ(std::get<Happening::BusWrite>(last.what).outputs,
              std::vector<std::vector<uint8_t>>{{0x04}});
    EXPECT_EQ(run.busOutputs, std::vector<std::vector<uint8_t>>{{0x04}});
}

TEST(ScenarioPlayer, ARestartEventRestartsTheVirtualControllerOnce) {
    const RunResult run = play(configFrom(digital(
        R"([ { "at_ms": 400, "event": { "id": 300, "value": 1 } }, { "at_ms": 500, "end": true } ])")));
    EXPECT_EQ(run.restarts, 1);
    EXPECT_EQ(count<Happening::Restart>(run), 1);
}

TEST(ScenarioPlayer, AStopTheConfigurationDoesNotExpectMakesTheRunGoWrong) {
    const RunResult run =
        play(configFrom(digital(R"([ { "at_ms": 400, "event": { "id": 999, "value": 1 } } ])")));
    EXPECT_TRUE(run.drivers.at(0).stopped);
    EXPECT_FALSE(run.wentAsExpected);
    EXPECT_EQ(run.exitStatus(), 1);
}

TEST(ScenarioPlayer, AnExpectedStopMakesTheRunGoAsExpected) {
    const RunResult run =
        play(configFrom(digital(R"([ { "at_ms": 400, "event": { "id": 999, "value": 1 } } ])",
                                R"(, "expect_stop": true)")));
    EXPECT_TRUE(run.wentAsExpected);
}

TEST(ScenarioPlayer, AnExpectedStopThatDoesNotComeMakesTheRunGoWrong) {
    const RunResult run = play(
        configFrom(digital(R"([ { "at_ms": 100, "end": true } ])", R"(, "expect_stop": true)")));
    EXPECT_FALSE(run.wentAsExpected);
}

TEST(ScenarioPlayer, AnExceptionOutOfCreateIsShownAndNoEventReachesTheMissingDriver) {
    const RunResult run = play(configFrom(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" },
        "scenario": [ { "at_ms": 100, "event": { "id": 5, "value": 1 } } ] })"));
    ASSERT_GE(run.timeline.size(), 3U);
    const auto& version = std::get<Happening::Log>(run.timeline[0].what);
    EXPECT_EQ(version.level, 4);
    EXPECT_EQ(run.timeline[0].driver, 0);
    const auto& exception = std::get<Happening::Exception>(run.timeline[1].what);
    EXPECT_EQ(exception.where, "create");
    EXPECT_EQ(exception.type, "std::invalid_argument");
    EXPECT_EQ(exception.what, "stoi");
    EXPECT_TRUE(std::holds_alternative<Happening::Event>(run.timeline[2].what));
    EXPECT_TRUE(std::holds_alternative<Happening::Note>(run.timeline.back().what));
    EXPECT_FALSE(run.drivers.at(0).created);
    EXPECT_FALSE(run.wentAsExpected);
}

TEST(ScenarioPlayer, UntilEndsTheRunEarlyAndLeavesLaterStepsOut) {
    axlsim::scenarioplayer::Options options;
    options.until = 150ms;
    const RunResult run = axlsim::scenarioplayer::run(
        configFrom(digital(R"([ { "at_ms": 250, "event": { "id": 200, "value": 1 } } ])")),
        axlsimtest::driverLibrary(), options);
    EXPECT_EQ(run.end, 150ms);
    EXPECT_EQ(run.busOutputs, std::vector<std::vector<uint8_t>>{{0x00}});
}

TEST(ScenarioPlayer, ReportsTheProgressOfAVirtualRun) {
    std::vector<std::chrono::nanoseconds> reported;
    axlsim::scenarioplayer::Options options;
    options.progress = [&reported](auto now, auto end) {
        EXPECT_EQ(end, 3s);
        reported.push_back(now);
    };
    axlsim::scenarioplayer::run(configFrom(digital(R"([ { "at_ms": 3000, "end": true } ])")),
                                axlsimtest::driverLibrary(), options);
    EXPECT_EQ(reported, (std::vector<std::chrono::nanoseconds>{1s, 2s, 3s}));
}

TEST(ScenarioPlayer, TwoDriversShareOneBusAndEachEventReachesItsDriver) {
    const auto config = axlsim::configreader::readFile(AXLSIM_EXAMPLES "/two_drivers.json");
    const RunResult run = play(config);
    ASSERT_EQ(run.drivers.size(), 2U);
    for (const Happening& happening : run.timeline) {
        if (const auto* publish = std::get_if<Happening::Publish>(&happening.what)) {
            EXPECT_EQ(happening.driver, publish->id < 300 ? 0 : 1);
        }
    }
    EXPECT_EQ(run.busOutputs.at(0), std::vector<uint8_t>{0x00});
    EXPECT_EQ(run.busOutputs.at(1), (std::vector<uint8_t>{0x00, 0x00, 0x54, 0xf6}));
}

TEST(ScenarioPlayer, AVirtualRunGivesTheSameTimelineEveryTime) {
    const auto config = axlsim::configreader::readFile(AXLSIM_EXAMPLES "/two_drivers.json");
    const std::string first = axlsimtest::jsonTimeline(config, play(config));
    for (int run = 0; run < 5; ++run) {
        EXPECT_EQ(axlsimtest::jsonTimeline(config, play(config)), first);
    }
}

TEST(ScenarioPlayer, ARunOnTheWallClockShowsTheDriversWorkAsItHappens) {
    axlsim::scenarioplayer::Options options;
    options.realTime = true;
    std::vector<Happening> live;
    options.live = [&live](const Happening& happening) { live.push_back(happening); };
    const RunResult run = axlsim::scenarioplayer::run(
        configFrom(digital(
            R"([ { "at_ms": 30, "event": { "id": 200, "value": 1 } }, { "at_ms": 60, "end": true } ])")),
        axlsimtest::driverLibrary(), options);
    EXPECT_EQ(live.size(), run.timeline.size());
    EXPECT_EQ(run.busOutputs, std::vector<std::vector<uint8_t>>{{0x04}});
    EXPECT_EQ(run.drivers.at(0).publishes, 1);
    EXPECT_GE(run.timeline.back().t, 30ms);
}

}  // namespace
