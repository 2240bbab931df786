// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "TestRuns.h"
#include "axlsim/check/CheckReport.h"
#include "axlsim/check/LoopCheck.h"
#include "axlsim/configuration/ConfigError.h"

namespace {

using axlsim::Config;
namespace loopcheck = axlsim::loopcheck;
using axlsimtest::configFrom;
using ::testing::HasSubstr;

// One digital driver at position 1 (input 0 publishes 100, outputs 0 and 1 take 200 and 201, 400
// restarts)
// and one analog driver at position 2 (channel 0 publishes 300, output 0 takes 310).
Config loop(const std::string& sections) {
    return configFrom(R"({ "drivers": [
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
          "mappings": { "100": { "size": 1 }, "200": { "size": 1 }, "201": { "size": 1 }, "400": { "size": 1 } },
          "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0" } },
                        "2": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } },
                        "3": { "eventId": 400, "type": "RestartDevice" },
                        "4": { "eventId": 201, "type": "DigitalOut", "params": { "PinNum": "1", "InitVal": "0" } } } },
)" + std::string(axlsimtest::kAnalogDriverAtPosition2) +
                      R"( ],
      "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ], )" +
                      sections + "}");
}

std::vector<loopcheck::Finding> findingsOf(const std::string& sections) {
    return loopcheck::check(loop(sections));
}

TEST(LoopCheck, FindsNothingWhenEveryModelAndRouteFits) {
    EXPECT_TRUE(findingsOf(R"("plant": [ { "wire": { "from": "1.DO0", "to": "1.DI1" } },
                                         { "link": { "from": "2.AO0", "to": "2.AI0" } },
                                         { "signal": { "to": "2.AI1", "shape": "sine", "period_ms": 10 } } ],
                              "host": [ { "route": { "from": 100, "to": 200, "map": "invert" } },
                                        { "route": { "from": 300, "from_driver": 1, "to": 201, "map": "below", "threshold": 1 } },
                                        { "route": { "from": 300, "from_driver": 1, "to": 310, "to_driver": 1, "map": "scale" } },
                                        { "route": { "from": 300, "from_driver": 1, "to": 400 } } ])")
                    .empty());
}

TEST(LoopCheck, TwoModelsOnOneInputAreRefused) {
    const auto findings = findingsOf(R"("plant": [ { "wire": { "from": "1.DO0", "to": "1.DI1" } },
                                 { "signal": { "to": "1.DI2", "shape": "square", "period_ms": 10 } },
                                 { "signal": { "to": "1.DI1", "shape": "square", "period_ms": 10 } } ])");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].path, "/plant/2");
    EXPECT_TRUE(findings[0].refusesRun);
    EXPECT_THAT(findings[0].problem, HasSubstr("\"1.DI1\" is driven by /plant/0 as well"));
}

TEST(LoopCheck, ARouteWhoseMapDoesNotFitItsIdsIsRefused) {
    const auto findings = findingsOf(R"("host": [
        { "route": { "from": 300, "from_driver": 1, "to": 200 } },
        { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "invert" } },
        { "route": { "from": 100, "to": 310, "to_driver": 1, "map": "above", "threshold": 0.5 } },
        { "route": { "from": 100, "to": 200, "map": "scale" } } ])");
    ASSERT_EQ(findings.size(), 4U);
    for (std::size_t i = 0; i < findings.size(); ++i) {
        EXPECT_EQ(findings[i].path, "/host/" + std::to_string(i));
        EXPECT_TRUE(findings[i].refusesRun);
    }
    EXPECT_THAT(findings[0].problem,
                HasSubstr("\"copy\" cannot turn the float of an \"AnalogIn\" service (event 300) "
                          "into the byte of a \"DigitalOut\" service (event 200)"));
    EXPECT_THAT(findings[0].fix, HasSubstr("\"above\" or \"below\""));
}

TEST(LoopCheck, ARouteFromAnIdThatNothingPublishesIsReported) {
    const auto findings = findingsOf(R"("host": [ { "route": { "from": 200, "to": 200 } } ])");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_FALSE(findings[0].refusesRun);
    EXPECT_EQ(findings[0].problem, "no input service of driver 0 publishes event 200");
    EXPECT_EQ(findings[0].consequence, "the route never fires");
}

TEST(LoopCheck, ARouteToAnIdThatNoOutputOrRestartServiceHasIsReportedWithTheDriversStop) {
    const auto findings =
        findingsOf(R"("host": [ { "route": { "from": 100, "to": 200, "to_driver": 1 } } ])");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_FALSE(findings[0].refusesRun);
    EXPECT_THAT(findings[0].consequence,
                HasSubstr("driver 1 stops with \"Unsubscribed event received\""));
}

TEST(LoopCheck, TwoRoutesToOneOutputAreReportedNamingBoth) {
    const auto findings = findingsOf(R"("host": [
        { "route": { "from": 100, "to": 200 } },
        { "route": { "from": 100, "to": 201 } },
        { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "above", "threshold": 5 } },
        { "route": { "from": 100, "to": 310, "to_driver": 1 } },
        { "route": { "from": 300, "from_driver": 1, "to": 310, "to_driver": 1, "map": "scale" } } ])");
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].path, "/host/2");
    EXPECT_EQ(findings[0].subject, "route 300 -> 200");
    EXPECT_FALSE(findings[0].refusesRun);
    EXPECT_EQ(findings[0].problem,
              "event 200 of driver 0 (the byte of a \"DigitalOut\" service) is driven by /host/0 "
              "as well");
    EXPECT_THAT(findings[0].fix, HasSubstr("drive each output by one route"));
    EXPECT_EQ(findings[1].path, "/host/4");
    EXPECT_THAT(findings[1].problem, HasSubstr("event 310 of driver 1 (the float of an "
                                               "\"AnalogOut\" service) is driven by /host/3"));
}

TEST(LoopCheck, AThresholdRouteToARestartServiceIsReportedAsRestartingAtEveryPublication) {
    const auto findings = findingsOf(R"("host": [
        { "route": { "from": 300, "from_driver": 1, "to": 400, "map": "above", "threshold": 5 } },
        { "route": { "from": 300, "from_driver": 1, "to": 400, "map": "below", "threshold": 1, "on_change": true } },
        { "route": { "from": 100, "to": 400 } } ])");
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].path, "/host/0");
    EXPECT_FALSE(findings[0].refusesRun);
    EXPECT_EQ(findings[0].problem,
              "\"above\" routes to the restart service (event 400) of driver 0, which gets its "
              "byte 0 whatever the map gives");
    EXPECT_EQ(findings[0].consequence,
              "driver 0 restarts at every publication of event 300 (at start and at every "
              "change), whatever the threshold");
    EXPECT_THAT(findings[0].fix, HasSubstr("a route cannot restart on a condition"));
    EXPECT_EQ(findings[1].path, "/host/1");
    EXPECT_THAT(findings[1].consequence, HasSubstr("restarts once, at the first publication"));
}

TEST(LoopCheck, RunRefusesTheFirstRefusedFindingAtItsPointer) {
    const Config config = loop(R"("host": [ { "route": { "from": 100, "to": 999 } },
                                            { "route": { "from": 300, "from_driver": 1, "to": 200 } } ])");
    try {
        loopcheck::requireRunnable(config);
        FAIL() << "no error";
    } catch (const axlsim::ConfigError& error) {
        EXPECT_EQ(error.place(), "/host/1");
    }
    EXPECT_NO_THROW(
        loopcheck::requireRunnable(loop(R"("host": [ { "route": { "from": 100, "to": 999 } } ])")));
}

TEST(LoopCheck, TheCheckReportListsThePlantAndHostFindingsUnderTheirOwnTitle) {
    const Config config = loop(R"("host": [ { "route": { "from": 200, "to": 200 } } ])");
    std::ostringstream out;
    axlsim::checkreport::write(out, config, {}, loopcheck::check(config));
    EXPECT_THAT(out.str(), HasSubstr("1 problem\n"));
    EXPECT_THAT(out.str(),
                HasSubstr("plant and host\n  /host/0 (route 200 -> 200)\n"
                          "    problem: no input service of driver 0 publishes event 200\n"
                          "    effect:  the route never fires\n"));
}

}  // namespace
