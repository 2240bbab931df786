// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ReadError.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/ConfigReader.h"

namespace {

using axlsim::Config;
using axlsim::ConfigError;
using axlsim::Link;
using axlsim::Pin;
using axlsim::Route;
using axlsim::Signal;
using axlsim::Wire;
using namespace std::chrono_literals;
using ::testing::HasSubstr;

// A digital module at position 1 and an analog module at position 2, with one driver.
Config read(const std::string& sections) {
    return axlsim::configreader::readText(
        R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
             "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ], )" +
            sections + "}",
        "loop.json");
}

ConfigError errorOf(const std::string& sections) {
    return axlsimtest::readError(read, sections);
}

TEST(LoopReader, NamesPinsByPositionKindAndNumber) {
    EXPECT_EQ(Pin::parse("1.DI0"), (Pin{1, Pin::Kind::DigitalIn, 0}));
    EXPECT_EQ(Pin::parse("12.DO7"), (Pin{12, Pin::Kind::DigitalOut, 7}));
    EXPECT_EQ(Pin::parse("2.AI1"), (Pin{2, Pin::Kind::AnalogIn, 1}));
    EXPECT_EQ(Pin::parse("2.AO0"), (Pin{2, Pin::Kind::AnalogOut, 0}));
    EXPECT_EQ((Pin{2, Pin::Kind::AnalogOut, 1}.name()), "2.AO1");
    for (const char* name : {"", "1", "1.", "1.DI", "DI0", "1.di0", "1.DX0", "1.DI-1", "1.DI0x",
                             "+1.DI0", "1:DI0", "1.DI 0"}) {
        EXPECT_FALSE(Pin::parse(name)) << name;
    }
}

TEST(LoopReader, ReadsAWireWithItsDefaults) {
    const Config config = read(R"("plant": [ { "wire": { "from": "1.DO0", "to": "1.DI1" } } ])");
    ASSERT_EQ(config.plant.size(), 1U);
    const auto& wire = std::get<Wire>(config.plant[0].model);
    EXPECT_EQ(wire.from, (Pin{1, Pin::Kind::DigitalOut, 0}));
    EXPECT_EQ(wire.to, (Pin{1, Pin::Kind::DigitalIn, 1}));
    EXPECT_EQ(wire.delay, 0ms);
    EXPECT_FALSE(wire.invert);
    EXPECT_EQ(config.plant[0].path, "/plant/0");
}

TEST(LoopReader, ReadsALinkWithItsDefaults) {
    const Config config = read(
        R"("plant": [ { "link": { "from": "2.AO1", "to": "2.AI0", "lag_ms": 2000, "delay_ms": 30 } } ])");
    const auto& link = std::get<Link>(config.plant[0].model);
    EXPECT_EQ(link.gain, 1.0);
    EXPECT_EQ(link.offset, 0.0);
    EXPECT_EQ(link.lag, 2000ms);
    EXPECT_EQ(link.delay, 30ms);
}

TEST(LoopReader, ReadsSignalsWithTheirDefaults) {
    const Config config = read(R"("plant": [
        { "signal": { "to": "1.DI3", "shape": "square", "period_ms": 2000 } },
        { "signal": { "to": "2.AI1", "shape": "ramp", "low": 1, "high": 5, "period_ms": 100,
                      "repeat": true, "from_ms": 10, "until_ms": 900 } } ])");
    const auto& square = std::get<Signal>(config.plant[0].model);
    EXPECT_EQ(square.shape, Signal::Shape::Square);
    EXPECT_EQ(square.duty, 0.5);
    EXPECT_EQ(square.from, 0ms);
    EXPECT_FALSE(square.until);
    const auto& ramp = std::get<Signal>(config.plant[1].model);
    EXPECT_EQ(ramp.low, 1.0);
    EXPECT_EQ(ramp.high, 5.0);
    EXPECT_TRUE(ramp.repeat);
    EXPECT_EQ(ramp.from, 10ms);
    EXPECT_EQ(ramp.until, 900ms);
}

TEST(LoopReader, ReadsARouteWithItsDefaults) {
    const Config config = read(R"("host": [ { "route": { "from": 100, "to": 200 } },
        { "route": { "from": 300, "to": 202, "map": "below", "threshold": 3.0, "hysteresis": 4.0,
                     "delay_ms": 8, "on_change": true } } ])");
    ASSERT_EQ(config.host.size(), 2U);
    EXPECT_EQ(config.host[0].map, Route::Map::Copy);
    EXPECT_EQ(config.host[0].delay, 0ms);
    EXPECT_EQ(config.host[0].fromDriver, 0);
    EXPECT_EQ(config.host[0].toDriver, 0);
    EXPECT_FALSE(config.host[0].onChange);
    EXPECT_EQ(config.host[1].map, Route::Map::Below);
    EXPECT_EQ(config.host[1].threshold, 3.0);
    EXPECT_EQ(config.host[1].hysteresis, 4.0);
    EXPECT_EQ(config.host[1].delay, 8ms);
    EXPECT_TRUE(config.host[1].onChange);
    EXPECT_EQ(config.host[1].path, "/host/1");
}

TEST(LoopReader, APinTheModuleDoesNotHaveIsAnErrorAtItsPointer) {
    const ConfigError error =
        errorOf(R"("plant": [ { "wire": { "from": "1.DO0", "to": "2.DI1" } } ])");
    EXPECT_EQ(error.place(), "/plant/0/wire/to");
    EXPECT_THAT(error.reason(),
                HasSubstr("\"2.DI1\" is no pin of the AXL_F_AI2_AO2 at position 2"));

    EXPECT_EQ(errorOf(R"("plant": [ { "wire": { "from": "1.DO8", "to": "1.DI1" } } ])").place(),
              "/plant/0/wire/from");
    EXPECT_EQ(errorOf(R"("plant": [ { "link": { "from": "2.AO2", "to": "2.AI0" } } ])").place(),
              "/plant/0/link/from");
    const ConfigError offBus = errorOf(
        R"("plant": [ { "signal": { "to": "3.DI0", "shape": "square", "period_ms": 10 } } ])");
    EXPECT_EQ(offBus.place(), "/plant/0/signal/to");
    EXPECT_THAT(offBus.reason(), HasSubstr("positions 1 to 2"));
    const ConfigError malformed =
        errorOf(R"("plant": [ { "wire": { "from": "DO0", "to": "1.DI1" } } ])");
    EXPECT_EQ(malformed.place(), "/plant/0/wire/from");
    EXPECT_THAT(malformed.reason(), HasSubstr("is not a pin name"));
}

TEST(LoopReader, APinOfTheWrongKindForItsRoleIsAnError) {
    const ConfigError error =
        errorOf(R"("plant": [ { "wire": { "from": "1.DI0", "to": "1.DI1" } } ])");
    EXPECT_EQ(error.place(), "/plant/0/wire/from");
    EXPECT_THAT(error.reason(), HasSubstr("this takes a digital output (DO)"));
    EXPECT_EQ(errorOf(R"("plant": [ { "link": { "from": "2.AO0", "to": "1.DI0" } } ])").place(),
              "/plant/0/link/to");
    EXPECT_EQ(errorOf(R"("plant": [ { "link": { "from": "2.AI1", "to": "2.AI0" } } ])").place(),
              "/plant/0/link/from");
    EXPECT_EQ(
        errorOf(
            R"("plant": [ { "signal": { "to": "1.DO0", "shape": "square", "period_ms": 10 } } ])")
            .place(),
        "/plant/0/signal/to");
}

TEST(LoopReader, ADigitalInputTakesOnlyASquareSignalWithoutLevels) {
    EXPECT_EQ(
        errorOf(R"("plant": [ { "signal": { "to": "1.DI0", "shape": "sine", "period_ms": 10 } } ])")
            .place(),
        "/plant/0/signal/shape");
    EXPECT_EQ(
        errorOf(
            R"("plant": [ { "signal": { "to": "1.DI0", "shape": "square", "high": 5, "period_ms": 10 } } ])")
            .place(),
        "/plant/0/signal/high");
}

TEST(LoopReader, RefusesSignalSettingsThatCannotWork) {
    EXPECT_EQ(
        errorOf(R"("plant": [ { "signal": { "to": "2.AI0", "shape": "saw", "period_ms": 10 } } ])")
            .place(),
        "/plant/0/signal/shape");
    EXPECT_EQ(
        errorOf(R"("plant": [ { "signal": { "to": "2.AI0", "shape": "sine", "period_ms": 0 } } ])")
            .place(),
        "/plant/0/signal/period_ms");
    EXPECT_EQ(errorOf(R"("plant": [ { "signal": { "to": "2.AI0", "shape": "sine" } } ])").place(),
              "/plant/0/signal");
    EXPECT_EQ(
        errorOf(
            R"("plant": [ { "signal": { "to": "2.AI0", "shape": "square", "period_ms": 10, "duty": 1.5 } } ])")
            .place(),
        "/plant/0/signal/duty");
    EXPECT_EQ(
        errorOf(
            R"("plant": [ { "signal": { "to": "2.AI0", "shape": "sine", "period_ms": 10, "repeat": true } } ])")
            .place(),
        "/plant/0/signal/repeat");
    EXPECT_EQ(
        errorOf(
            R"("plant": [ { "signal": { "to": "2.AI0", "shape": "ramp", "period_ms": 10, "from_ms": 50, "until_ms": 40 } } ])")
            .place(),
        "/plant/0/signal/until_ms");
}

TEST(LoopReader, AModelIsExactlyOneOfWireLinkAndSignal) {
    EXPECT_EQ(errorOf(R"("plant": [ { } ])").place(), "/plant/0");
    EXPECT_EQ(errorOf(R"("plant": [ { "pipe": { } } ])").place(), "/plant/0/pipe");
    EXPECT_EQ(errorOf(R"("plant": [ { "wire": { "from": "1.DO0", "to": "1.DI1", "lag_ms": 5 } } ])")
                  .place(),
              "/plant/0/wire/lag_ms");
    EXPECT_EQ(errorOf(R"("plant": { })").place(), "/plant");
}

TEST(LoopReader, RefusesRouteSettingsThatDoNotBelongToItsMap) {
    EXPECT_EQ(errorOf(R"("host": [ { "route": { "from": 1, "to": 2, "map": "twice" } } ])").place(),
              "/host/0/route/map");
    EXPECT_EQ(errorOf(R"("host": [ { "route": { "from": 1, "to": 2, "map": "above" } } ])").place(),
              "/host/0/route");
    EXPECT_EQ(
        errorOf(R"("host": [ { "route": { "from": 1, "to": 2, "map": "copy", "threshold": 1 } } ])")
            .place(),
        "/host/0/route/threshold");
    EXPECT_EQ(
        errorOf(
            R"("host": [ { "route": { "from": 1, "to": 2, "map": "below", "threshold": 1, "gain": 2 } } ])")
            .place(),
        "/host/0/route/gain");
    EXPECT_EQ(
        errorOf(
            R"("host": [ { "route": { "from": 1, "to": 2, "map": "above", "threshold": 1, "hysteresis": -1 } } ])")
            .place(),
        "/host/0/route/hysteresis");
    EXPECT_EQ(errorOf(R"("host": [ { "route": { "from": 1, "to": 2, "to_driver": 1 } } ])").place(),
              "/host/0/route/to_driver");
    EXPECT_EQ(errorOf(R"("host": [ { "route": { "to": 2 } } ])").place(), "/host/0/route");
    EXPECT_EQ(errorOf(R"("host": [ { "path": { } } ])").place(), "/host/0/path");
}

}  // namespace
