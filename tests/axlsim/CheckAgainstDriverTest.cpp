// SPDX-License-Identifier: MIT
// Each mistake that `axlsim check` names, checked and then run with the real driver: what check
// predicts is what the driver does.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "TestRuns.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/configuration/ConfigReader.h"

namespace {

namespace configcheck = axlsim::configcheck;
using axlsim::Happening;
using axlsim::RunResult;
using axlsimtest::configFrom;
using axlsimtest::play;
using ::testing::HasSubstr;

constexpr const char* kDigital = "AXL_F_DI8_1_DO8_1";
constexpr const char* kAnalog = "AXL_F_AI2_AO2";

struct Configuration {
    std::string deviceType = kDigital;
    std::string consecutiveNumber = R"("Consecutive Number": "1")";
    std::string mappings = R"({ "100": { "size": 1 }, "101": { "size": 1 }, "102": { "size": 1 },
                                "300": { "size": 4 }, "301": { "size": 4 } })";
    std::string services;
    std::string scenario = "[]";
    std::string bus;
};

std::string json(const Configuration& setup) {
    return R"({ "driver": { "name": "d", "serviceName": "S", "deviceType": ")" + setup.deviceType +
           R"(", "params": { )" + setup.consecutiveNumber + R"( } }, "mappings": )" +
           setup.mappings + R"(, "services": )" + setup.services + R"(, "scenario": )" +
           setup.scenario + (setup.bus.empty() ? "" : R"(, "bus": )" + setup.bus) + "}";
}

struct Checked {
    axlsim::Config config;
    std::vector<configcheck::Finding> findings;
    RunResult run;
};

Checked checkAndRun(const Configuration& setup) {
    Checked checked{configFrom(json(setup)), {}, {}};
    checked.findings = configcheck::check(checked.config);
    checked.run = play(checked.config);
    return checked;
}

// The prediction of the first stop or exception equals what the driver did first.
void expectPredictedFailure(const Checked& checked, int driver = 0) {
    const auto predicted = configcheck::firstFailure(checked.findings, driver);
    const auto actual = axlsimtest::firstFailure(checked.run, driver);
    ASSERT_TRUE(predicted.has_value()) << "check predicts no failure";
    ASSERT_TRUE(actual.has_value()) << "the driver did not fail";
    if (predicted->effect == configcheck::Effect::Stops) {
        EXPECT_EQ(actual->stopMessage, predicted->stopMessage);
        EXPECT_EQ(actual->stopEventId, predicted->stopEventId);
        if (!predicted->log.empty()) {
            EXPECT_EQ(actual->logBefore, predicted->log);
        }
    } else {
        EXPECT_EQ(actual->where, predicted->where);
        EXPECT_EQ(actual->exceptionType, predicted->exception->type);
        EXPECT_EQ(actual->exceptionWhat, predicted->exception->what);
    }
}

// The one finding that is not a failure; fails the test unless there is exactly one.
configcheck::Finding onlyDifference(const Checked& checked) {
    std::vector<configcheck::Finding> differences;
    std::copy_if(checked.findings.begin(), checked.findings.end(), std::back_inserter(differences),
                 [](const auto& f) { return f.effect == configcheck::Effect::Differs; });
    EXPECT_EQ(differences.size(), 1U);
    EXPECT_EQ(differences.size(), checked.findings.size()) << "check predicts a failure as well";
    return differences.empty() ? configcheck::Finding{} : differences.front();
}

template <class Kind>
std::vector<Kind> happeningsOf(const RunResult& run) {
    std::vector<Kind> found;
    for (const Happening& happening : run.timeline) {
        if (const auto* kind = std::get_if<Kind>(&happening.what)) {
            found.push_back(*kind);
        }
    }
    return found;
}

std::vector<uint8_t> firstBusWrite(const RunResult& run, int position) {
    const auto writes = happeningsOf<Happening::BusWrite>(run);
    return writes.empty() ? std::vector<uint8_t>{}
                          : writes.front().outputs.at(static_cast<std::size_t>(position - 1));
}

TEST(CheckAgainstDriver, APinOutOfRangeIsLoggedAsNotAvailableAndStopsTheDriver) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "8" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).log,
              "Digital input pin with number 8 is not available. Valid numbers are 0 - 7.");
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Invalid digital input number.");
}

TEST(CheckAgainstDriver, ANegativeAnalogOutputPinIsNotAvailable) {
    Configuration setup;
    setup.deviceType = kAnalog;
    setup.services =
        R"({ "1": { "eventId": 300, "type": "AnalogOut", "params": { "PinNum": "-1", "InitVal": "0" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Invalid analog output number");
}

TEST(CheckAgainstDriver, ADigitalInputPinUsedTwiceStopsWithPinAlreadyInUseWithoutAFullStop) {
    Configuration setup;
    setup.services = R"({ "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "2" } },
                          "2": { "eventId": 101, "type": "DigitalIn", "params": { "PinNum": "2" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Pin already in use");
    EXPECT_EQ(checked.findings.at(0).serviceKey, 2U);
}

TEST(CheckAgainstDriver, AnAnalogInputPinUsedTwiceStopsWithPinAlreadyInUseWithAFullStop) {
    Configuration setup;
    setup.deviceType = kAnalog;
    setup.services = R"({ "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "1" } },
                          "2": { "eventId": 301, "type": "AnalogIn", "params": { "PinNum": "1" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Pin already in use.");
    EXPECT_EQ(checked.findings.at(0).log, "Analog input pin with number 1 is already in use.");
}

TEST(CheckAgainstDriver, AServiceTextInOtherLettersIsAnUnsupportedServiceType) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 100, "type": "digitalin", "params": { "PinNum": "0" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Unsupported service type.");
    EXPECT_THAT(checked.findings.at(0).fix, HasSubstr("\"DigitalIn\""));
}

TEST(CheckAgainstDriver, AKindTheModuleDoesNotOfferIsAnUnsupportedServiceType) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 300, "type": "AnalogOut", "params": { "PinNum": "0", "InitVal": "0" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Unsupported service type.");
}

TEST(CheckAgainstDriver, AnUnknownDeviceTypeStopsAtTheFirstService) {
    Configuration setup;
    setup.deviceType = "AXL_F_DI8_1_DO8";
    setup.services = R"({ "4": { "eventId": 101, "type": "DigitalIn", "params": { "PinNum": "0" } },
                          "7": { "eventId": 102, "type": "DigitalIn", "params": { "PinNum": "1" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).serviceKey, 4U);
}

TEST(CheckAgainstDriver, APinNumWithoutDigitsThrowsInvalidArgumentOutOfInitialize) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "abc" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).exception->type, "std::invalid_argument");
}

TEST(CheckAgainstDriver, AMissingInitValThrowsBeforeThePinIsLookedAt) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "9" } } })";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(configcheck::firstFailure(checked.findings, 0)->effect, configcheck::Effect::Throws);
}

TEST(CheckAgainstDriver, AConsecutiveNumberBeyondTheIntRangeThrowsOutOfRangeOutOfCreate) {
    Configuration setup;
    setup.consecutiveNumber = R"("Consecutive Number": "4294967296")";
    setup.services = "{}";
    setup.bus = R"([ "AXL_F_DI8_1_DO8_1" ])";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).exception->type, "std::out_of_range");
    EXPECT_EQ(checked.findings.at(0).where, "create");
}

TEST(CheckAgainstDriver, AMissingConsecutiveNumberThrowsInvalidArgumentOutOfCreate) {
    Configuration setup;
    setup.consecutiveNumber = R"("Other": "1")";
    setup.services = "{}";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_FALSE(checked.run.drivers.at(0).created);
}

TEST(CheckAgainstDriver, AnEventIdWithoutAServiceStopsWithUnsubscribedEventReceived) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } })";
    setup.scenario = R"([ { "at_ms": 200, "event": { "id": 102, "value": 1 } } ])";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Unsubscribed event received");
}

TEST(CheckAgainstDriver, AnEventWithNoDataStopsWithNullDataPointer) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } })";
    setup.scenario = R"([ { "at_ms": 200, "event": { "id": 101, "null": true } } ])";
    const Checked checked = checkAndRun(setup);
    expectPredictedFailure(checked);
    EXPECT_EQ(checked.findings.at(0).stopMessage, "Null data pointer");
}

TEST(CheckAgainstDriver, OfSeveralMistakesTheDriverMeetsTheOneCheckNamesFirst) {
    const axlsim::Config config = axlsim::configreader::readFile(AXLSIM_EXAMPLES "/mistakes.json");
    const Checked checked{config, configcheck::check(config), play(config)};
    expectPredictedFailure(checked, 0);
    EXPECT_FALSE(configcheck::firstFailure(checked.findings, 1).has_value());
    EXPECT_FALSE(axlsimtest::firstFailure(checked.run, 1).has_value());
}

TEST(CheckAgainstDriver, APinNumOfOnePointFiveServesPin1) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "1.5" } } })";
    setup.scenario = R"([ { "at_ms": 0, "input": { "module": 1, "pin": 1, "value": 1 } } ])";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("reads it as 1"));
    const auto published = happeningsOf<Happening::Publish>(checked.run);
    ASSERT_FALSE(published.empty());
    EXPECT_EQ(published.front().bytes, std::vector<uint8_t>{1});
}

TEST(CheckAgainstDriver, AConsecutiveNumberOfOnePointFiveServesPosition1) {
    Configuration setup;
    setup.consecutiveNumber = R"("Consecutive Number": "1.5")";
    setup.bus = R"([ "AXL_F_DI8_1_DO8_1", "AXL_F_DI8_1_DO8_1" ])";
    setup.services =
        R"({ "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0" } } })";
    setup.scenario = R"([ { "at_ms": 0, "input": { "module": 1, "pin": 0, "value": 1 } } ])";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("reads it as 1"));
    const auto published = happeningsOf<Happening::Publish>(checked.run);
    ASSERT_FALSE(published.empty());
    EXPECT_EQ(published.front().bytes, std::vector<uint8_t>{1});
}

TEST(CheckAgainstDriver, AnInitValOfZeroX1LeavesTheOutputOff) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "3", "InitVal": "0x1" } } })";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("reads it as 0"));
    EXPECT_EQ(firstBusWrite(checked.run, 1), std::vector<uint8_t>{0x00});
}

TEST(CheckAgainstDriver, ADigitalInitValOf2SwitchesPin3OnAsPredicted) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "3", "InitVal": "2" } } })";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("switches pin 3 on"));
    EXPECT_EQ(firstBusWrite(checked.run, 1), std::vector<uint8_t>{0x08});
}

TEST(CheckAgainstDriver, ADigitalInitValOf2SwitchesPin0OffAsPredicted) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "2" } } })";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("switches pin 0 off"));
    EXPECT_EQ(firstBusWrite(checked.run, 1), std::vector<uint8_t>{0x00});
}

TEST(CheckAgainstDriver, AnEventByteOf255SwitchesPin1OffAsPredicted) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "1", "InitVal": "1" } } })";
    setup.scenario = R"([ { "at_ms": 100, "event": { "id": 101, "value": 255 } } ])";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("switches pin 1 off"));
    EXPECT_EQ(checked.run.busOutputs.at(0), std::vector<uint8_t>{0x00});
}

TEST(CheckAgainstDriver, AnAnalogInitValOf22IsSentAsTheRawWord464) {
    Configuration setup;
    setup.deviceType = kAnalog;
    setup.services =
        R"({ "1": { "eventId": 300, "type": "AnalogOut", "params": { "PinNum": "0", "InitVal": "22" } } })";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("raw word 464"));
    EXPECT_EQ(firstBusWrite(checked.run, 1), (std::vector<uint8_t>{0x01, 0xd0, 0x00, 0x00}));
}

TEST(CheckAgainstDriver, AnEventIdOfAnOutputAndARestartServiceNeverRestarts) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } },
                          "2": { "eventId": 101, "type": "RestartDevice" } })";
    setup.scenario = R"([ { "at_ms": 100, "event": { "id": 101, "value": 1 } } ])";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("never restarts"));
    EXPECT_EQ(checked.run.restarts, 0);
    EXPECT_EQ(checked.run.busOutputs.at(0), std::vector<uint8_t>{0x01});
}

TEST(CheckAgainstDriver, AnInputWithoutAMappingIsPublishedWithNoPayload) {
    Configuration setup;
    setup.services =
        R"({ "1": { "eventId": 150, "type": "DigitalIn", "params": { "PinNum": "0" } } })";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("with no payload"));
    const auto published = happeningsOf<Happening::Publish>(checked.run);
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published.front().size, 0U);
    EXPECT_TRUE(published.front().bytes.empty());
}

TEST(CheckAgainstDriver, AnAnalogInputWithAMappingOfTwoBytesPublishesTwoBytes) {
    Configuration setup;
    setup.deviceType = kAnalog;
    setup.mappings = R"({ "300": { "size": 2 } })";
    setup.services =
        R"({ "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "0" } } })";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("only 2 of the float's four bytes"));
    const auto published = happeningsOf<Happening::Publish>(checked.run);
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published.front().bytes.size(), 2U);
}

TEST(CheckAgainstDriver, AConsecutiveNumberBeyondTheBusLeavesBothPortsWithoutOffset) {
    Configuration setup;
    setup.consecutiveNumber = R"("Consecutive Number": "3")";
    setup.bus = R"([ "AXL_F_DI8_1_DO8_1" ])";
    setup.services = "{}";
    const Checked checked = checkAndRun(setup);
    const auto finding = onlyDifference(checked);
    EXPECT_THAT(finding.consequence, HasSubstr("Arp.Io.AxlC/2.~DI8"));
    EXPECT_THAT(finding.consequence, HasSubstr("Arp.Io.AxlC/2.~DO8"));
    std::vector<std::string> offsets;
    for (const auto& log : happeningsOf<Happening::Log>(checked.run)) {
        if (log.format == "Can't get offset to port: %s") {
            offsets.push_back(log.text);
        }
    }
    ASSERT_EQ(offsets.size(), 2U);
    EXPECT_THAT(offsets[0], HasSubstr("Arp.Io.AxlC/2.~DI8"));
    EXPECT_THAT(offsets[1], HasSubstr("Arp.Io.AxlC/2.~DO8"));
}

TEST(CheckAgainstDriver, AnotherModuleTypeAtThePositionLeavesBothPortsWithoutOffset) {
    Configuration setup;
    setup.deviceType = kAnalog;
    setup.bus = R"([ "AXL_F_DI8_1_DO8_1" ])";
    setup.services = "{}";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).problem, HasSubstr("holds AXL_F_DI8_1_DO8_1"));
    const auto logs = happeningsOf<Happening::Log>(checked.run);
    EXPECT_EQ(
        std::count_if(logs.begin(), logs.end(),
                      [](const auto& log) { return log.format == "Can't get offset to port: %s"; }),
        2);
}

TEST(CheckAgainstDriver, AnUnknownDeviceTypeWithoutServicesStartsWithoutAModule) {
    Configuration setup;
    setup.deviceType = "AXL_F_DO16";
    setup.services = "{}";
    setup.bus = R"([ "AXL_F_DI8_1_DO8_1" ])";
    const Checked checked = checkAndRun(setup);
    EXPECT_THAT(onlyDifference(checked).consequence, HasSubstr("without a module"));
    EXPECT_FALSE(axlsimtest::firstFailure(checked.run, 0).has_value());
    EXPECT_EQ(checked.run.drivers.at(0).publishes, 0);
}

}  // namespace
