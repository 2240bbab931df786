// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "TestRuns.h"
#include "axlsim/check/CheckReport.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/configuration/ConfigReader.h"

namespace {

namespace configcheck = axlsim::configcheck;
using axlsimtest::configFrom;
using ::testing::HasSubstr;

using Effect = configcheck::Effect;

std::vector<configcheck::Finding> findingsOf(const std::string& json) {
    return configcheck::check(configFrom(json));
}

TEST(ConfigCheck, FindsNothingInACleanConfiguration) {
    const auto config = axlsim::configreader::readFile(AXLSIM_EXAMPLES "/feedback_loop.json");
    EXPECT_TRUE(configcheck::check(config).empty());
}

TEST(ConfigCheck, ListsEveryProblemAtOnceEachWithItsServiceAndEffect) {
    const auto config = axlsim::configreader::readFile(AXLSIM_EXAMPLES "/mistakes.json");
    std::vector<std::pair<std::optional<unsigned>, Effect>> seen;
    for (const auto& finding : configcheck::check(config)) {
        if (finding.driver == 0) {
            seen.emplace_back(finding.serviceKey, finding.effect);
        }
    }
    const std::vector<std::pair<std::optional<unsigned>, Effect>> expected{
        {1U, Effect::Stops},          {2U, Effect::Differs}, {3U, Effect::Stops},
        {4U, Effect::Stops},          {5U, Effect::Stops},   {6U, Effect::Differs},
        {8U, Effect::Differs},        {9U, Effect::Throws},  {7U, Effect::Differs},
        {std::nullopt, Effect::Stops}};
    EXPECT_EQ(seen, expected);
}

TEST(ConfigCheck, SaysHowToFixEveryProblem) {
    const auto config = axlsim::configreader::readFile(AXLSIM_EXAMPLES "/mistakes.json");
    for (const auto& finding : configcheck::check(config)) {
        EXPECT_FALSE(finding.problem.empty());
        EXPECT_FALSE(finding.fix.empty()) << finding.problem;
    }
}

TEST(ConfigCheck, ASecondDriverOnTheSamePositionIsFound) {
    const auto findings = findingsOf(R"({ "drivers": [
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } } },
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } } } ] })");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].driver, 1);
    EXPECT_THAT(findings[0].problem, HasSubstr("driver 0 serves position 1 as well"));
}

TEST(ConfigCheck, AnAnalogOutputWhoseMappingIsNotFourBytesIsFound) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_AI2_AO2",
        "params": { "Consecutive Number": "1" } }, "mappings": { "310": { "size": 1 } },
        "services": { "1": { "eventId": 310, "type": "AnalogOut", "params": { "PinNum": "0", "InitVal": "0" } } } })");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_THAT(findings[0].consequence, HasSubstr("reads four bytes of every event"));
}

TEST(ConfigCheck, AnOutputWhoseEventHasNoMappingIsFound) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Number": "1" } },
        "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } } })");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].problem, "event 200 has no mapping");
    EXPECT_EQ(findings[0].fix, "add \"200\": { \"size\": 1 } to \"mappings\"");
}

TEST(ConfigCheck, AServiceTextWithBlanksIsMeantAsTheServiceWithoutThem) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Number": "1" } }, "mappings": { "1": { "size": 1 } },
        "services": { "1": { "eventId": 1, "type": "RestartDevice " } } })");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].fix,
              "write \"RestartDevice\" exactly (the driver compares the text exactly)");
}

TEST(CheckReport, NamesTheServiceWhatTheDriverDoesAndTheFix) {
    const auto config =
        configFrom(R"({ "driver": { "name": "axl1", "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Number": "1" } }, "mappings": { "100": { "size": 1 } },
        "services": { "2": { "eventId": 100, "name": "in8", "type": "DigitalIn", "params": { "PinNum": "8" } } } })");
    std::ostringstream out;
    axlsim::checkreport::write(out, config, configcheck::check(config));
    const std::string report = out.str();
    EXPECT_THAT(report, HasSubstr("test.json: 1 problem"));
    EXPECT_THAT(report, HasSubstr("service 2 (\"DigitalIn\" \"in8\", event 100)"));
    EXPECT_THAT(report, HasSubstr("logs \"Digital input pin with number 8 is not available. Valid "
                                  "numbers are 0 - 7.\" and stops with \"Invalid digital input "
                                  "number.\""));
    EXPECT_THAT(report, HasSubstr("fix:     use a pin from 0 to 7"));
    EXPECT_THAT(report, HasSubstr("fails first in initialize, at service 2"));
}

TEST(CheckReport, SaysSoWhenThereIsNoProblem) {
    const auto config = configFrom(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Number": "1" } } })");
    std::ostringstream out;
    axlsim::checkreport::write(out, config, configcheck::check(config));
    EXPECT_EQ(out.str(), "test.json: no problems found\n");
}

const configcheck::Finding* findingAbout(const std::vector<configcheck::Finding>& findings,
                                         const std::string& text) {
    for (const auto& finding : findings) {
        if (finding.problem.find(text) != std::string::npos) {
            return &finding;
        }
    }
    return nullptr;
}

TEST(ConfigCheck, AServiceKeyTheDriverDoesNotReadIsFoundWithTheNearestKeyItReads) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" },
        "mappings": { "200": { "size": 1 } },
        "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVall": "1" } } } })");
    const auto* finding = findingAbout(findings, "InitVall");
    ASSERT_NE(finding, nullptr);
    EXPECT_EQ(finding->problem, "InitVall: not a key the driver reads; did you mean InitVal?");
    EXPECT_EQ(finding->serviceKey, 1U);
    EXPECT_EQ(finding->fix, "rename it to InitVal");
}

TEST(ConfigCheck, ADriverKeyNextToConsecutiveNumberIsFoundWithoutAdviceToRenameItIntoASecond) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Number": "1", "Consecutive Nr": "2" } } })");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].problem,
              "Consecutive Nr: not a key the driver reads; Consecutive Number, which it reads, is "
              "given already");
    EXPECT_EQ(findings[0].fix, "remove it");
    EXPECT_EQ(findings[0].where, "create");
}

TEST(ConfigCheck, ADriverKeyNearConsecutiveNumberIsMeantAsItWhenItIsMissing) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Nr": "1" } } })");
    const auto* finding = findingAbout(findings, "Consecutive Nr");
    ASSERT_NE(finding, nullptr);
    EXPECT_EQ(finding->problem,
              "Consecutive Nr: not a key the driver reads; did you mean Consecutive Number?");
    EXPECT_EQ(finding->fix, "rename it to Consecutive Number");
}

TEST(ConfigCheck, CutsALongValueInItsFindings) {
    const std::string value(100000, '7');
    const auto config = configFrom(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1",
        "params": { "Consecutive Number": "1x)" +
                                   value + R"(", "x)" + value + R"(": "1" } },
        "mappings": { "100": { "size": 1 } },
        "services": { "1": { "eventId": 100, "name": ")" +
                                   value + R"(", "type": ")" + value + R"(" } } })");
    const auto findings = configcheck::check(config);
    const std::string cut = std::string(59, '7') + "...";
    const auto* number = findingAbout(findings, "\"Consecutive Number\" is");
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->problem, "\"Consecutive Number\" is \"1x" + std::string(58, '7') +
                                   "...\" (100002 characters)");
    const auto* key = findingAbout(findings, "not a key");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(key->problem, "x" + cut +
                                " (100001 characters): not a key the driver reads (it "
                                "reads Consecutive Number)");
    std::ostringstream out;
    axlsim::checkreport::write(out, config, findings);
    EXPECT_LT(out.str().size(), 2000U) << out.str();
    const std::string quoted = "\"" + std::string(60, '7') + "...\" (100000 characters)";
    EXPECT_THAT(out.str(), HasSubstr("service 1 (" + quoted + " " + quoted + ", event 100)"));
}

TEST(ConfigCheck, CutsALongValueWithoutSplittingACharacter) {
    std::string value;
    for (int i = 0; i < 100; ++i) {
        value += "\u00e9";  // é, two bytes in UTF-8
    }
    const auto findings = findingsOf(R"({ "driver": { "deviceType": ")" + value + R"(" } })");
    const auto* finding = findingAbout(findings, "deviceType");
    ASSERT_NE(finding, nullptr);
    std::string shown;
    for (int i = 0; i < 60; ++i) {
        shown += "\xc3\xa9";
    }
    EXPECT_EQ(finding->problem, "\"deviceType\" is \"" + shown +
                                    "...\" (100 characters), which names no module the driver "
                                    "knows");
}

TEST(ConfigCheck, AKeyFarFromEveryKeyTheDriverReadsIsFoundWithoutAGuess) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" },
        "mappings": { "100": { "size": 1 }, "300": { "size": 1 } },
        "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0", "InitVal": "1" } },
                      "2": { "eventId": 300, "type": "RestartDevice", "params": { "Colour": "red" } } } })");
    const auto* initial = findingAbout(findings, "InitVal");
    ASSERT_NE(initial, nullptr);
    EXPECT_EQ(initial->problem,
              "InitVal: not a key the driver reads for a DigitalIn service (it reads PinNum)");
    EXPECT_EQ(initial->fix, "remove it");
    const auto* colour = findingAbout(findings, "Colour");
    ASSERT_NE(colour, nullptr);
    EXPECT_EQ(colour->problem,
              "Colour: not a key the driver reads for a RestartDevice service (it reads none)");
}

TEST(ConfigCheck, AKeyInAnotherLetterCaseIsFoundWithTheKeyItMeans) {
    const auto findings = findingsOf(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" },
        "mappings": { "100": { "size": 1 } },
        "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "pinnum": "0" } } } })");
    const auto* finding = findingAbout(findings, "pinnum");
    ASSERT_NE(finding, nullptr);
    EXPECT_EQ(finding->problem, "pinnum: not a key the driver reads; did you mean PinNum?");
}

TEST(ConfigCheck, AnEventWhoseSizeIsLargerThanItsBytesIsFound) {
    const auto findings = findingsOf(
        R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
        "mappings": { "200": { "size": 1 } },
        "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } },
        "scenario": [ { "at_ms": 100, "event": { "id": 200, "value": 1, "size": 4294967295 } } ] })");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].problem, "event 200 has the size 4294967295 but carries 1 byte");
    EXPECT_EQ(findings[0].at, std::chrono::milliseconds(100));
    EXPECT_EQ(findings[0].effect, Effect::Differs);
}

TEST(ConfigCheck, AnEventWithAsManyBytesAsItsSizeIsFine) {
    const auto findings = findingsOf(
        R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
        "mappings": { "200": { "size": 1 } },
        "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } },
        "scenario": [ { "at_ms": 100, "event": { "id": 200, "bytes": "0100", "size": 2 } } ] })");
    EXPECT_TRUE(findings.empty());
}

}  // namespace
