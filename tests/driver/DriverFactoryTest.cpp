// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExposedDriver.h"
#include "PLCNext.h"
#include "hosting/DriverConfig.h"
#include "hosting/HostCalls.h"
#include "hosting/LoggedLine.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

namespace host = hosting::host;
using hosting::DriverConfig;
using hosting::LoggedLine;
using hosting::loggedLines;
using testsupport::ExposedDriver;

namespace {

const LoggedLine kVersionLine{4, "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]",
                              "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO1]"};

int consecutiveNumberFrom(const std::string& text) {
    ExposedDriver driver(DriverConfig(DriverConfig::kDigitalModule, text));
    return driver.consecutiveNumber();
}

// Creates a driver through the factory and returns what it threw, if anything.
template <class Exception>
std::string whatTheFactoryThrows(const DriverConfig& config) {
    try {
        host::create(config);
    } catch (const Exception& error) {
        return error.what();
    }
    return "nothing thrown";
}

// Creates a driver through the factory, expecting it to throw E from "stoi" without stopping:
// the lines it logged before.
template <class Exception>
std::vector<LoggedLine> linesBeforeStoiThrows(const DriverConfig& config) {
    orbel::Recorder recorder;
    EXPECT_EQ(whatTheFactoryThrows<Exception>(config), "stoi");
    EXPECT_TRUE(recorder.stops().empty());
    return loggedLines(recorder);
}

}  // namespace

TEST(DriverFactory, ConsecutiveNumber3Yields3) {
    EXPECT_EQ(consecutiveNumberFrom("3"), 3);
}

TEST(DriverFactory, ConsecutiveNumberWithABlankBefore12abcYields12) {
    EXPECT_EQ(consecutiveNumberFrom(" 12abc"), 12);
}

TEST(DriverFactory, ConsecutiveNumberMinus1YieldsMinus1) {
    EXPECT_EQ(consecutiveNumberFrom("-1"), -1);
}

TEST(DriverFactory, ConsecutiveNumber0x10Yields0) {
    EXPECT_EQ(consecutiveNumberFrom("0x10"), 0);
}

TEST(DriverFactory, AnEmptyConsecutiveNumberThrowsInvalidArgumentAfterLoggingTheVersionOnce) {
    EXPECT_EQ(linesBeforeStoiThrows<std::invalid_argument>(
                  DriverConfig::digital().param("Consecutive Number", "")),
              std::vector<LoggedLine>{kVersionLine});
}

TEST(DriverFactory, AnAbsentConsecutiveNumberThrowsInvalidArgumentAfterLoggingTheVersionOnce) {
    EXPECT_EQ(linesBeforeStoiThrows<std::invalid_argument>(
                  DriverConfig::digital().withoutParam("Consecutive Number")),
              std::vector<LoggedLine>{kVersionLine});
}

TEST(DriverFactory, AConsecutiveNumberWithoutDigitsThrowsInvalidArgument) {
    EXPECT_EQ(whatTheFactoryThrows<std::invalid_argument>(
                  DriverConfig::digital().param("Consecutive Number", "first")),
              "stoi");
    EXPECT_EQ(whatTheFactoryThrows<std::invalid_argument>(
                  DriverConfig::digital().param("Consecutive Number", "  -")),
              "stoi");
}

TEST(DriverFactory, ConsecutiveNumber4294967296ThrowsOutOfRange) {
    EXPECT_EQ(linesBeforeStoiThrows<std::out_of_range>(
                  DriverConfig::digital().param("Consecutive Number", "4294967296")),
              std::vector<LoggedLine>{kVersionLine});
}

TEST(DriverFactory, ConsecutiveNumbersAtTheEndsOfTheIntRangeAreAccepted) {
    EXPECT_EQ(consecutiveNumberFrom("2147483647"), 2147483647);
    EXPECT_EQ(consecutiveNumberFrom("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(whatTheFactoryThrows<std::out_of_range>(
                  DriverConfig::digital().param("Consecutive Number", "2147483648")),
              "stoi");
}

TEST(DriverFactory, ASuccessfulParseLeavesTheCallersErrnoAlone) {
    errno = EDOM;
    const int number = consecutiveNumberFrom("7");
    EXPECT_EQ(errno, EDOM);
    EXPECT_EQ(number, 7);
}

TEST(DriverFactory, TheVersionLineNamesTheServiceIO1) {
    orbel::Recorder recorder;

    auto driver = host::create(DriverConfig::digital().serviceName("IO1"));

    EXPECT_EQ(loggedLines(recorder), std::vector<LoggedLine>{kVersionLine});
    const auto logs = recorder.logs(driver.get());
    ASSERT_EQ(logs.size(), 1u);
}

TEST(DriverFactory, TheVersionLineCarriesWhateverServiceTextTheHostGives) {
    orbel::Recorder recorder;

    auto driver = host::create(DriverConfig::analog().serviceName("Line 4 %d"));

    const auto logs = recorder.logs();
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].text, "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[Line 4 %d]");
}

TEST(DriverFactory, ConstructionTouchesNoHardwareAndStartsNoThread) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    orbel::Recorder recorder;

    auto driver = host::create(DriverConfig::digital().digitalIn(10, "1").digitalOut(20, "2", "1"));

    EXPECT_EQ(station.calls("ArpPlcIo_GetBufferPtrByBufferID"), 0);
    EXPECT_EQ(station.calls("ArpPlcAxio_ReadFromAxioToGds"), 0);
    EXPECT_EQ(station.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
    EXPECT_TRUE(recorder.threadStarts().empty());
    EXPECT_TRUE(recorder.stops().empty());
}

TEST(DriverFactory, TheHostsTablesAreReadAndNotChanged) {
    auto config = DriverConfig::digital().digitalIn(10, "1").restart(30);
    config.services[10].mapParams.erase("PinNum");

    // Handed the records' own tables.
    host::create(config).reset();

    const auto& mappings = config.mappings;
    const auto& services = config.services;
    ASSERT_EQ(mappings.size(), 1u);
    EXPECT_EQ(mappings.at(10).nDataSize, 1);
    ASSERT_EQ(services.size(), 2u);
    EXPECT_TRUE(services.at(10).mapParams.empty());
    EXPECT_EQ(services.at(30).sServiceType, "RestartDevice");
}

TEST(DriverFactory, TheDriverIsUsedAndDeletedThroughItsHostBase) {
    orbel::Recorder recorder;
    auto config = DriverConfig::digital();

    // Deleted below through its base, not by the host's owner.
    CSI_base* driver = host::create(config).release();

    ASSERT_NE(driver, nullptr);
    EXPECT_NE(dynamic_cast<CPLCNext*>(driver), nullptr);
    EXPECT_EQ(static_cast<void*>(dynamic_cast<CPLCNext*>(driver)), static_cast<void*>(driver));
    delete driver;
}

TEST(DriverFactory, TheDriverKeepsItsOwnCopiesOfTheRecords) {
    const auto config = DriverConfig::digital(4).serviceName("IO7").digitalIn(10, "1").restart(30);

    ExposedDriver driver(config);

    EXPECT_EQ(driver.hostParams().sServiceName, "IO7");
    EXPECT_EQ(driver.hostParams().sDeviceType, "AXL_F_DI8_1_DO8_1");
    EXPECT_EQ(driver.hostParams().mapParams.at("Consecutive Number"), "4");
    EXPECT_EQ(driver.hostServices().size(), 2u);
    EXPECT_EQ(driver.hostServices().at(10).sServiceType, "DigitalIn");
    EXPECT_EQ(driver.hostMappings().at(10).nDataSize, 1);
    EXPECT_EQ(driver.module(), nullptr);
    EXPECT_TRUE(driver.digitalInputs().empty());
    EXPECT_TRUE(driver.analogInputs().empty());
    EXPECT_TRUE(driver.outputs().empty());
    EXPECT_TRUE(driver.restartEventIds().empty());
    EXPECT_FALSE(driver.stopped());
}

TEST(ServiceTypes, TheFiveServiceTextsMapToTheirKinds) {
    EXPECT_EQ(CPLCNext::getServiceType("AnalogIn"), AnalogIn);
    EXPECT_EQ(CPLCNext::getServiceType("AnalogOut"), AnalogOut);
    EXPECT_EQ(CPLCNext::getServiceType("DigitalIn"), DigitalIn);
    EXPECT_EQ(CPLCNext::getServiceType("DigitalOut"), DigitalOut);
    EXPECT_EQ(CPLCNext::getServiceType("RestartDevice"), RestartDevice);
    EXPECT_EQ(static_cast<int>(CPLCNext::getServiceType("RestartDevice")), 4);
}

TEST(ServiceTypes, ATextInAnotherLetterCaseIsUnsupported) {
    EXPECT_EQ(CPLCNext::getServiceType("analogin"), Unsupported);
    EXPECT_EQ(CPLCNext::getServiceType("DIGITALOUT"), Unsupported);
}

TEST(ServiceTypes, ATextWithABlankAroundItIsUnsupported) {
    EXPECT_EQ(CPLCNext::getServiceType("AnalogIn "), Unsupported);
    EXPECT_EQ(CPLCNext::getServiceType(" DigitalIn"), Unsupported);
}

TEST(ServiceTypes, AnEmptyOrUnknownTextIsUnsupported) {
    EXPECT_EQ(CPLCNext::getServiceType(""), Unsupported);
    EXPECT_EQ(CPLCNext::getServiceType("Restart"), Unsupported);
    EXPECT_EQ(static_cast<int>(CPLCNext::getServiceType("Restart")), 5);
}
