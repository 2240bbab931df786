// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

#include "ReadError.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/ConfigReader.h"

namespace {

using axlsim::Config;
using axlsim::ConfigError;
namespace configreader = axlsim::configreader;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

constexpr const char* kDigitalDriver = R"(
  "driver": { "name": "axl1", "serviceName": "IO1", "deviceType": "AXL_F_DI8_1_DO8_1",
              "params": { "Consecutive Number": "1" } },
  "mappings": { "100": { "size": 1 }, "101": { "size": 1 } },
  "services": { "1": { "eventId": 100, "name": "in0", "type": "DigitalIn", "params": { "PinNum": "0" } },
                "2": { "eventId": 101, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } })";

Config read(const std::string& json) {
    return configreader::readText(json, "config.json");
}

Config withScenario(const std::string& scenario) {
    return read(std::string("{") + kDigitalDriver +
                R"(, "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ],
                "scenario": )" +
                scenario + "}");
}

// The error that reading the text gives.
ConfigError errorOf(const std::string& json) {
    return axlsimtest::readError(read, json);
}

ConfigError scenarioErrorOf(const std::string& scenario) {
    return errorOf(std::string("{") + kDigitalDriver +
                   R"(, "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ], "scenario": )" + scenario +
                   "}");
}

TEST(ConfigReader, FillsTheDriversRecordsFromTheConfiguration) {
    const Config config = read(std::string("{") + kDigitalDriver + "}");
    ASSERT_EQ(config.drivers.size(), 1U);
    const Config::Driver& driver = config.drivers[0];
    EXPECT_EQ(driver.name, "axl1");
    EXPECT_EQ(driver.serviceName, "IO1");
    EXPECT_EQ(driver.deviceType, "AXL_F_DI8_1_DO8_1");
    EXPECT_EQ(driver.params.at("Consecutive Number"), "1");
    EXPECT_EQ(driver.mappings.at(100), 1);
    EXPECT_EQ(driver.services.at(1).eventId, 100U);
    EXPECT_EQ(driver.services.at(1).name, "in0");
    EXPECT_EQ(driver.services.at(2).params.at("InitVal"), "0");
    EXPECT_FALSE(config.severalDrivers);
}

TEST(ConfigReader, AcceptsComments) {
    const Config config = read(R"(// a driver
        { /* its type */ "driver": { "deviceType": "AXL_F_AI2_AO2" } })");
    EXPECT_EQ(config.drivers[0].deviceType, "AXL_F_AI2_AO2");
}

TEST(ConfigReader, PassesServiceTextsAsTheyStand) {
    const Config config =
        read(R"({ "services": { "1": { "eventId": 1, "type": " digitalin" } } })");
    EXPECT_EQ(config.drivers[0].services.at(1).type, " digitalin");
}

TEST(ConfigReader, AServiceWithoutParamsHasAnEmptyTable) {
    const Config config =
        read(R"({ "services": { "3": { "eventId": 300, "type": "RestartDevice" } } })");
    EXPECT_TRUE(config.drivers[0].services.at(3).params.empty());
}

TEST(ConfigReader, OrdersServiceKeysAsNumbers) {
    const Config config = read(R"({ "services": { "10": { "eventId": 1, "type": "DigitalIn" },
                                                   "9": { "eventId": 2, "type": "DigitalIn" } } })");
    EXPECT_EQ(config.drivers[0].services.begin()->first, 9U);
}

TEST(ConfigReader, RefusesAServiceKeyThatIsNotAnUnsignedNumber) {
    const ConfigError error =
        errorOf(R"({ "services": { "-1": { "eventId": 1, "type": "DigitalIn" } } })");
    EXPECT_EQ(error.file(), "config.json");
    EXPECT_EQ(error.place(), "/services/-1");
}

TEST(ConfigReader, NamesTheFileAndThePlaceOfAnUnknownKey) {
    const ConfigError error = errorOf(R"({ "driver": { "devicetype": "AXL_F_AI2_AO2" } })");
    EXPECT_EQ(error.file(), "config.json");
    EXPECT_EQ(error.place(), "/driver/devicetype");
    EXPECT_THAT(error.reason(), HasSubstr("unknown key"));
    EXPECT_THAT(std::string(error.what()),
                HasSubstr("config.json: /driver/devicetype: unknown key"));
}

TEST(ConfigReader, RefusesANumberWhereTheDriverGetsAText) {
    const ConfigError error = errorOf(R"({ "driver": { "params": { "Consecutive Number": 1 } } })");
    EXPECT_EQ(error.place(), "/driver/params/Consecutive Number");
    EXPECT_THAT(error.reason(), HasSubstr("write \"1\""));
}

TEST(ConfigReader, NamesTheLineAndColumnOfASyntaxError) {
    const ConfigError error = errorOf("{\n  \"driver\": { ,\n}");
    EXPECT_THAT(error.reason(), HasSubstr("line 2, column 15"));
}

TEST(ConfigReader, RefusesDriversTogetherWithASingleDriver) {
    const ConfigError error = errorOf(R"({ "driver": {}, "drivers": [ {} ] })");
    EXPECT_EQ(error.place(), "/drivers");
}

TEST(ConfigReader, WithoutABusPutsTheDriversModuleAtEveryPositionUpToItsConsecutiveNumber) {
    const Config config = read(R"({ "driver": { "deviceType": "AXL_F_AI2_AO2",
                                                "params": { "Consecutive Number": "3" } } })");
    EXPECT_EQ(config.bus, (std::vector<vplc::Module>{vplc::Module::AI2_AO2, vplc::Module::AI2_AO2,
                                                     vplc::Module::AI2_AO2}));
}

TEST(ConfigReader, WithoutABusAndNoUsableConsecutiveNumberTheBusHasOneModule) {
    const Config config = read(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" } })");
    EXPECT_EQ(config.bus, std::vector<vplc::Module>{vplc::Module::DI8_DO8});
}

TEST(ConfigReader, WithoutABusEachOfSeveralDriversFindsItsModuleAtItsPosition) {
    const Config config = read(R"({ "drivers": [
        { "driver": { "deviceType": "AXL_F_AI2_AO2", "params": { "Consecutive Number": "3" } } },
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } } } ] })");
    EXPECT_TRUE(config.severalDrivers);
    EXPECT_EQ(config.bus, (std::vector<vplc::Module>{vplc::Module::DI8_DO8, vplc::Module::AI2_AO2,
                                                     vplc::Module::AI2_AO2}));
}

TEST(ConfigReader, RefusesAnUnknownModuleTypeOnTheBus) {
    const ConfigError error = errorOf(R"({ "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_DO16" ] })");
    EXPECT_EQ(error.place(), "/bus/1");
}

TEST(ConfigReader, ReadsADigitalInputStep) {
    const Config config =
        withScenario(R"([ { "at_ms": 250, "input": { "module": 1, "pin": 3, "value": 1 } } ])");
    const auto& input = std::get<Config::Input>(config.scenario[0].action);
    EXPECT_EQ(config.scenario[0].at, 250ms);
    EXPECT_EQ(input.position, 1);
    EXPECT_EQ(input.pin, 3);
    EXPECT_EQ(input.value, 1);
}

TEST(ConfigReader, ConvertsAnAnalogInputValueWithTheIbIlScale) {
    const Config config =
        withScenario(R"([ { "at_ms": 0, "input": { "module": 2, "pin": 1, "value": 4.125 } } ])");
    EXPECT_EQ(std::get<Config::Input>(config.scenario[0].action).value, 12375);
}

TEST(ConfigReader, RefusesAnInputOnAPositionTheBusDoesNotHave) {
    const ConfigError error =
        scenarioErrorOf(R"([ { "at_ms": 0, "input": { "module": 3, "pin": 0, "value": 1 } } ])");
    EXPECT_EQ(error.place(), "/scenario/0/input/module");
}

TEST(ConfigReader, RefusesAPinTheModuleDoesNotHave) {
    const ConfigError error =
        scenarioErrorOf(R"([ { "at_ms": 0, "input": { "module": 2, "pin": 2, "raw": 1 } } ])");
    EXPECT_EQ(error.place(), "/scenario/0/input/pin");
}

TEST(ConfigReader, RefusesARawWordForADigitalInput) {
    const ConfigError error =
        scenarioErrorOf(R"([ { "at_ms": 0, "input": { "module": 1, "pin": 0, "raw": 1 } } ])");
    EXPECT_EQ(error.place(), "/scenario/0/input/raw");
}

TEST(ConfigReader, AnEventValueIsAByteForADigitalOutput) {
    const Config config = withScenario(R"([ { "at_ms": 0, "event": { "id": 101, "value": 1 } } ])");
    const auto& event = std::get<Config::Event>(config.scenario[0].action);
    EXPECT_EQ(event.payload, std::vector<uint8_t>{1});
    EXPECT_EQ(event.size, 1U);
}

TEST(ConfigReader, AnEventValueIsANativeFloatForAnAnalogOutput) {
    const Config config = read(R"({ "driver": { "deviceType": "AXL_F_AI2_AO2" },
        "mappings": { "310": { "size": 4 } },
        "services": { "1": { "eventId": 310, "type": "AnalogOut", "params": { "PinNum": "0", "InitVal": "0" } } },
        "scenario": [ { "at_ms": 0, "event": { "id": 310, "value": 2.5 } } ] })");
    const auto& event = std::get<Config::Event>(config.scenario[0].action);
    float value = 0.0f;
    ASSERT_EQ(event.payload->size(), sizeof value);
    std::memcpy(&value, event.payload->data(), sizeof value);
    EXPECT_EQ(value, 2.5f);
}

TEST(ConfigReader, AnEventsSizeIsTheMappingsSizeEvenForMoreBytes) {
    const Config config =
        withScenario(R"([ { "at_ms": 0, "event": { "id": 101, "bytes": "01ff" } } ])");
    const auto& event = std::get<Config::Event>(config.scenario[0].action);
    EXPECT_EQ(event.payload, (std::vector<uint8_t>{0x01, 0xff}));
    EXPECT_EQ(event.size, 1U);
}

TEST(ConfigReader, AnEventWithoutMappingHasTheSizeOfItsBytes) {
    const Config config =
        withScenario(R"([ { "at_ms": 0, "event": { "id": 999, "bytes": "0102ff" } } ])");
    EXPECT_EQ(std::get<Config::Event>(config.scenario[0].action).size, 3U);
}

TEST(ConfigReader, AnEventsSizeCanBeGiven) {
    const Config config =
        withScenario(R"([ { "at_ms": 0, "event": { "id": 101, "value": 1, "size": 7 } } ])");
    EXPECT_EQ(std::get<Config::Event>(config.scenario[0].action).size, 7U);
}

TEST(ConfigReader, ANullEventHasNoPayload) {
    const Config config =
        withScenario(R"([ { "at_ms": 0, "event": { "id": 999, "null": true } } ])");
    const auto& event = std::get<Config::Event>(config.scenario[0].action);
    EXPECT_FALSE(event.payload.has_value());
    EXPECT_EQ(event.size, 0U);
}

TEST(ConfigReader, RefusesAnEventWithBothAValueAndBytes) {
    const ConfigError error =
        scenarioErrorOf(R"([ { "at_ms": 0, "event": { "id": 101, "value": 1, "bytes": "01" } } ])");
    EXPECT_EQ(error.place(), "/scenario/0/event");
}

TEST(ConfigReader, RefusesAnEventForADriverThatIsNotThere) {
    const ConfigError error =
        scenarioErrorOf(R"([ { "at_ms": 0, "event": { "id": 101, "value": 1, "driver": 1 } } ])");
    EXPECT_EQ(error.place(), "/scenario/0/event/driver");
}

TEST(ConfigReader, ReadsAPlcOperationByName) {
    const Config config = withScenario(R"([ { "at_ms": 5, "plc": "StartWarm" } ])");
    EXPECT_EQ(std::get<Config::Plc>(config.scenario[0].action).operation, PlcOperation_StartWarm);
}

TEST(ConfigReader, PutsTheStepsInTimeOrderKeepingTheOrderOfStepsAtOneTime) {
    const Config config =
        withScenario(R"([ { "at_ms": 20, "note": "c" }, { "at_ms": 10, "note": "a" },
                                            { "at_ms": 10, "note": "b" } ])");
    ASSERT_EQ(config.scenario.size(), 3U);
    EXPECT_EQ(config.scenario[0].note, "a");
    EXPECT_EQ(config.scenario[1].note, "b");
    EXPECT_EQ(config.scenario[2].note, "c");
}

TEST(ConfigReader, WithoutAnEndTheRunEndsASecondAfterTheLastStep) {
    const Config config = withScenario(R"([ { "at_ms": 400, "note": "x" } ])");
    EXPECT_EQ(config.end, 1400ms);
}

TEST(ConfigReader, AnEndStepEndsTheRun) {
    const Config config =
        withScenario(R"([ { "at_ms": 400, "note": "x" }, { "at_ms": 2000, "end": true } ])");
    EXPECT_EQ(config.end, 2000ms);
}

TEST(ConfigReader, RefusesAStepAfterTheEnd) {
    const ConfigError error =
        scenarioErrorOf(R"([ { "at_ms": 100, "end": true }, { "at_ms": 200, "note": "late" } ])");
    EXPECT_EQ(error.place(), "/scenario/1");
}

TEST(ConfigReader, ReadsWhetherAStopIsExpected) {
    EXPECT_TRUE(read(R"({ "expect_stop": true })").expectStop);
    EXPECT_FALSE(read("{}").expectStop);
}

TEST(ConfigReader, NamesTheFileThatCannotBeOpened) {
    try {
        configreader::readFile("/nonexistent/config.json");
        FAIL() << "no error";
    } catch (const ConfigError& error) {
        EXPECT_EQ(error.file(), "/nonexistent/config.json");
        EXPECT_THAT(error.reason(), HasSubstr("cannot open"));
    }
}

TEST(ConfigReader, RefusesAServiceKeyGivenTwiceNamingThePointerAndBothLines) {
    const ConfigError error = errorOf(R"({ "services": {
        "1": { "eventId": 100, "type": "DigitalIn" },
        "1": { "eventId": 101, "type": "DigitalIn" } } })");
    EXPECT_EQ(error.place(), "/services/1");
    EXPECT_EQ(error.reason(),
              "the key \"1\" is given twice in /services, on line 2 and on line 3; give each key "
              "once");
}

TEST(ConfigReader, RefusesATopLevelKeyGivenTwice) {
    const ConfigError error = errorOf(R"({ "mappings": { "100": { "size": 1 } },
        "mappings": { "101": { "size": 1 } } })");
    EXPECT_EQ(error.place(), "/mappings");
    EXPECT_THAT(error.reason(), HasSubstr("given twice in the top level, on line 1 and on line 2"));
}

TEST(ConfigReader, NamesADuplicateKeyInsideAListByItsIndex) {
    const ConfigError error = errorOf(R"({ "scenario": [ { "at_ms": 1, "note": "a" },
        { "at_ms": 2, "note": "b", "at_ms": 3 } ] })");
    EXPECT_EQ(error.place(), "/scenario/1/at_ms");
}

TEST(ConfigReader, EscapesADuplicateKeyInItsPointer) {
    const ConfigError error =
        errorOf(R"({ "driver": { "params": { "a/b~c": "1", "a/b~c": "2" } } })");
    EXPECT_EQ(error.place(), "/driver/params/a~1b~0c");
}

TEST(ConfigReader, ShowsOnlyTheStartOfAnUnterminatedComment) {
    const std::string rest(5000, 'x');
    const ConfigError error = errorOf("{ /* " + rest + " }");
    EXPECT_THAT(error.reason(), HasSubstr("missing closing '*/'"));
    EXPECT_LT(error.reason().size(), 200U) << error.reason();
    EXPECT_THAT(error.reason(), HasSubstr("...'"));
}

TEST(ConfigReader, PlacesAnUnterminatedCommentWhereItOpens) {
    const ConfigError error = errorOf(
        "{\n  \"description\": \"a\", // a /* in a line comment\n"
        "  \"expect_stop\": true /* done */ /* " +
        std::string(5000, 'x') + "\n}");
    EXPECT_EQ(error.place(), "");
    EXPECT_THAT(error.reason(), testing::StartsWith("line 3, column 34: the comment that opens "
                                                    "here has no end: missing closing '*/'; "
                                                    "last read: '"));
    EXPECT_LT(error.reason().size(), 200U) << error.reason();
}

TEST(ConfigReader, PlacesAnUnterminatedCommentAfterANumberWhereItOpens) {
    const ConfigError error = errorOf("{ \"scenario\": [ { \"at_ms\": 1/* x");
    EXPECT_THAT(error.reason(), testing::StartsWith("line 1, column 29: the comment"));
}

TEST(ConfigReader, PlacesAnUnterminatedCommentBeforeTheFirstValue) {
    const ConfigError error = errorOf("// a\n\n   /* no end");
    EXPECT_THAT(error.reason(), testing::StartsWith("line 3, column 4: the comment"));
}

TEST(ConfigReader, RefusesANumberBeyondADoubleNamingItsPlace) {
    const ConfigError error = errorOf("{\n  \"scenario\": [ { \"at_ms\": 1e999 } ] }");
    EXPECT_EQ(error.reason(),
              "line 2, column 28: the number 1e999 is out of range; axlsim reads numbers from "
              "-1.7976931348623157e308 to 1.7976931348623157e308");
}

TEST(ConfigReader, CutsANumberBeyondADoubleShort) {
    const ConfigError error = errorOf("[-1" + std::string(5000, '0') + "]");
    EXPECT_THAT(error.reason(),
                testing::StartsWith("line 1, column 2: the number -1" + std::string(38, '0') +
                                    "... (5002 characters) is out of range"));
}

TEST(ConfigReader, ReadsObjectsAndListsNested256Deep) {
    const ConfigError error =
        errorOf(std::string(255, '[') + "{ \"a\": 1 }" + std::string(255, ']'));
    // Read, and refused only because the top level is no object.
    EXPECT_EQ(error.reason(), "expected an object");
}

TEST(ConfigReader, RefusesObjectsAndListsNestedDeeperThan256NamingWhere) {
    const ConfigError error =
        errorOf("{ \"plant\":\n  " + std::string(256, '[') + std::string(256, ']') + " }");
    EXPECT_EQ(error.reason(),
              "the objects and lists are nested deeper than 256 levels at line 2, column 258; "
              "axlsim reads at most 256");
}

TEST(ConfigReader, RefusesDeepNestingBeforeReadingItAll) {
    // A hundred thousand levels: the refusal comes at the 257th, without reading the rest.
    const ConfigError error = errorOf(std::string(100000, '['));
    EXPECT_THAT(error.reason(), HasSubstr("nested deeper than 256 levels at line 1, column 257"));
}

TEST(ConfigReader, RefusesTwoServiceKeysThatNameOneNumber) {
    const ConfigError error = errorOf(R"({ "services": {
        "1": { "eventId": 100, "type": "DigitalIn" },
        "01": { "eventId": 101, "type": "DigitalIn" } } })");
    EXPECT_EQ(error.place(), "/services/01");
    EXPECT_EQ(error.reason(),
              "the keys \"1\" and \"01\" name the same service 1 in /services, on line 2 and on "
              "line 3; give each number once");
}

TEST(ConfigReader, NamesTwoKeysOfOneNumberInTheOrderOfTheFile) {
    const ConfigError error = errorOf(R"({ "mappings": {
        "0100": { "size": 1 },
        "7": { "size": 1 },
        "100": { "size": 4 } } })");
    EXPECT_EQ(error.place(), "/mappings/100");
    EXPECT_EQ(error.reason(),
              "the keys \"0100\" and \"100\" name the same event id 100 in /mappings, on line 2 "
              "and on line 4; give each number once");
}

TEST(ConfigReader, RefusesTwoKeysOfOneNumberInAListOfDrivers) {
    const ConfigError error = errorOf(R"({ "drivers": [ { "services": {} }, { "services": {
        "2": { "eventId": 100, "type": "DigitalIn" },
        "002": { "eventId": 101, "type": "DigitalIn" } } } ] })");
    EXPECT_EQ(error.place(), "/drivers/1/services/002");
    EXPECT_THAT(error.reason(), HasSubstr("name the same service 2 in /drivers/1/services, on "
                                          "line 2 and on line 3"));
}

TEST(ConfigReader, NamesTheLineOfAKeyGivenTwiceFarIntoTheFile) {
    std::string text = "{ \"description\": \"x\",\n";
    for (int i = 0; i < 100000; ++i) {
        text += " \n";
    }
    text += "\"description\": \"y\" }";
    const ConfigError error = errorOf(text);
    EXPECT_THAT(error.reason(), HasSubstr("on line 1 and on line 100002"));
}

TEST(ConfigReader, AcceptsAStepAtTheLongestRun) {
    const Config config = withScenario(R"([ { "at_ms": 1000000000000, "note": "late" } ])");
    EXPECT_EQ(config.scenario[0].at, std::chrono::milliseconds(1'000'000'000'000));
}

TEST(ConfigReader, RefusesAStepBeyondTheLongestRunSayingWhatIsAccepted) {
    for (const char* time : {"1000000000001", "-1", "1.5", "1e22", "\"10\""}) {
        const ConfigError error =
            scenarioErrorOf(std::string(R"([ { "at_ms": )") + time + R"(, "note": "x" } ])");
        EXPECT_EQ(error.place(), "/scenario/0/at_ms") << time;
        EXPECT_EQ(error.reason(),
                  "expected a time in whole milliseconds, from 0 to 10^12 ms (about 31 years)")
            << time;
    }
}

TEST(ConfigReader, RefusesADirectory) {
    try {
        configreader::readFile(::testing::TempDir());
        FAIL() << "no error";
    } catch (const ConfigError& error) {
        EXPECT_THAT(error.reason(), HasSubstr("is a directory"));
    }
}

TEST(ConfigReader, RefusesADeviceBeforeReadingIt) {
    for (const char* device : {"/dev/zero", "/dev/urandom"}) {
        try {
            configreader::readFile(device);
            FAIL() << "no error for " << device;
        } catch (const ConfigError& error) {
            EXPECT_EQ(error.file(), device);
            EXPECT_THAT(error.reason(), HasSubstr("is not a regular file")) << device;
        }
    }
}

TEST(ConfigReader, StopsReadingAStreamAtTheLimit) {
    std::istringstream endless(std::string(4096, ' '));
    try {
        configreader::readStream(endless, "standard input", 1024);
        FAIL() << "no error";
    } catch (const ConfigError& error) {
        EXPECT_EQ(error.file(), "standard input");
        EXPECT_EQ(error.reason(),
                  "is larger than 1024 bytes, the most axlsim reads as a configuration");
    }
}

TEST(ConfigReader, ReadsAStreamWithinTheLimit) {
    std::istringstream in(R"({ "description": "from a pipe" })");
    EXPECT_EQ(configreader::readStream(in, "standard input").description, "from a pipe");
}

}  // namespace
