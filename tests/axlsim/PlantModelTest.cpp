// SPDX-License-Identifier: MIT
// The plant models on the virtual bus, run with the real driver. The digital driver scans its
// one input at 1, 101, 201, ... ms; the analog driver its one channel likewise.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "TestRuns.h"
#include "modules/IbIlConversion.h"

namespace {

using axlsim::Happening;
using axlsim::RunResult;
using namespace axlsimtest;
using namespace std::chrono_literals;

// A digital module at position 1: input pin 1 publishes event 101, event 200 drives output 0.
constexpr const char* kDigital =
    R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
                "mappings": { "101": { "size": 1 }, "200": { "size": 1 } },
                "services": { "1": { "eventId": 101, "type": "DigitalIn", "params": { "PinNum": "1" } },
                              "2": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } })";

// An analog module at position 1: channel 0 publishes event 300, event 310 drives output 0.
constexpr const char* kAnalog =
    R"({ "driver": { "deviceType": "AXL_F_AI2_AO2", "params": { "Consecutive Number": "1" } },
                "mappings": { "300": { "size": 4 }, "310": { "size": 4 } },
                "services": { "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "0" } },
                              "2": { "eventId": 310, "type": "AnalogOut", "params": { "PinNum": "0", "InitVal": "0" } } })";

// One of the modules above with the plant and scenario sections.
std::string withPlant(const char* module, const std::string& plant, const std::string& scenario) {
    return std::string(module) + R"(, "plant": )" + plant + R"(, "scenario": )" + scenario + "}";
}

std::string digital(const std::string& plant, const std::string& scenario) {
    return withPlant(kDigital, plant, scenario);
}

std::string analog(const std::string& plant, const std::string& scenario) {
    return withPlant(kAnalog, plant, scenario);
}

struct Move {
    std::chrono::nanoseconds t;
    std::string to;
    uint16_t value;
    bool operator==(const Move&) const = default;
};

std::vector<Move> moves(const RunResult& run) {
    std::vector<Move> found;
    for (const auto& move : happeningsOf<Happening::PlantMove>(run)) {
        found.push_back({move.t, move.what.to.name(), move.what.value});
    }
    return found;
}

struct Value {
    std::chrono::nanoseconds t;
    float value;
};

// The values of event 300 as the driver published them.
std::vector<Value> analogPublications(const RunResult& run) {
    std::vector<Value> found;
    for (const auto& publish : happeningsOf<Happening::Publish>(run)) {
        float value = 0.0f;
        std::memcpy(&value, publish.what.bytes.data(), sizeof value);
        found.push_back({publish.t, value});
    }
    return found;
}

std::optional<float> publishedAt(const RunResult& run, std::chrono::nanoseconds t) {
    for (const Value& value : analogPublications(run)) {
        if (value.t == t) {
            return value.value;
        }
    }
    return std::nullopt;
}

// What the analog input shows for a value of the plant: clamped, then converted to the word.
float asTheDriverSeesIt(double value) {
    return from_ib_il(to_ib_il(static_cast<float>(std::clamp(value, 0.0, 21.845))));
}

TEST(PlantModels, AWireBringsTheOutputBackOnTheInputAfterItsDelay) {
    const RunResult run = play(
        configFrom(digital(R"([ { "wire": { "from": "1.DO0", "to": "1.DI1", "delay_ms": 5 } } ])",
                           R"([ { "at_ms": 250, "event": { "id": 200, "value": 1 } },
                     { "at_ms": 400, "event": { "id": 200, "value": 0 } }, { "at_ms": 600, "end": true } ])")));
    EXPECT_EQ(moves(run), (std::vector<Move>{{255ms, "1.DI1", 1}, {405ms, "1.DI1", 0}}));
    const auto published = happeningsOf<Happening::Publish>(run);
    ASSERT_EQ(published.size(), 3U);
    EXPECT_EQ(published[1].t, 301ms);
    EXPECT_EQ(published[1].what.bytes, std::vector<uint8_t>{1});
    EXPECT_EQ(published[2].t, 501ms);
}

TEST(PlantModels, AWireWithoutDelayFollowsInTheSameHostCall) {
    const RunResult run = play(configFrom(digital(
        R"([ { "wire": { "from": "1.DO0", "to": "1.DI1" } } ])",
        R"([ { "at_ms": 101, "event": { "id": 200, "value": 1 } }, { "at_ms": 200, "end": true } ])")));
    EXPECT_EQ(moves(run), (std::vector<Move>{{101ms, "1.DI1", 1}}));
    // Host steps at a time come before the scan due then: the scan at 101 ms sees it.
    EXPECT_EQ(happeningsOf<Happening::Publish>(run).back().t, 101ms);
}

TEST(PlantModels, AnInvertedWireHoldsItsInputOnBeforeTheDriverStarts) {
    const RunResult run = play(configFrom(digital(
        R"([ { "wire": { "from": "1.DO0", "to": "1.DI1", "invert": true, "delay_ms": 5 } } ])",
        R"([ { "at_ms": 250, "event": { "id": 200, "value": 1 } }, { "at_ms": 400, "end": true } ])")));
    EXPECT_EQ(moves(run), (std::vector<Move>{{0ms, "1.DI1", 1}, {255ms, "1.DI1", 0}}));
    const auto published = happeningsOf<Happening::Publish>(run);
    EXPECT_EQ(published.front().what.bytes, std::vector<uint8_t>{1});
}

TEST(PlantModels, AWireFollowsTheInitialValuesThatInitializeWrites) {
    const std::string config =
        R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
        "mappings": { "101": { "size": 1 }, "200": { "size": 1 } },
        "services": { "1": { "eventId": 101, "type": "DigitalIn", "params": { "PinNum": "1" } },
                      "2": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "1" } } },
        "plant": [ { "wire": { "from": "1.DO0", "to": "1.DI1", "delay_ms": 3 } } ],
        "scenario": [ { "at_ms": 100, "end": true } ] })";
    EXPECT_EQ(moves(play(configFrom(config))), (std::vector<Move>{{3ms, "1.DI1", 1}}));
}

TEST(PlantModels, TheLastToActSetsAnInput) {
    const RunResult run = play(
        configFrom(digital(R"([ { "wire": { "from": "1.DO0", "to": "1.DI1", "delay_ms": 5 } } ])",
                           R"([ { "at_ms": 250, "event": { "id": 200, "value": 1 } },
                     { "at_ms": 280, "input": { "module": 1, "pin": 1, "value": 0 } },
                     { "at_ms": 400, "end": true } ])")));
    // The wire set it at 255 ms, the scenario cleared it at 280 ms: the scan at 301 sees 0.
    EXPECT_EQ(happeningsOf<Happening::Publish>(run).size(), 1U);
}

TEST(PlantModels, ALinkFollowsItsOutputWithAFirstOrderLag) {
    const RunResult run = play(configFrom(analog(
        R"([ { "link": { "from": "1.AO0", "to": "1.AI0", "lag_ms": 1000 } } ])",
        R"([ { "at_ms": 1000, "event": { "id": 310, "value": 6.0 } }, { "at_ms": 3000, "end": true } ])")));
    const double x = from_ib_il(to_ib_il(6.0f));
    // y(t) = target + (y0 - target) * exp(-(t - t0) / lag), from y0 = 0 at t0 = 1000 ms.
    EXPECT_EQ(publishedAt(run, 1101ms),
              asTheDriverSeesIt(x + (0.0 - x) * std::exp(-101.0 / 1000.0)));
    EXPECT_EQ(publishedAt(run, 2001ms),
              asTheDriverSeesIt(x + (0.0 - x) * std::exp(-1001.0 / 1000.0)));
    // Before the output changed the input held the target of the rest state.
    EXPECT_EQ(publishedAt(run, 0ms), 0.0f);
    EXPECT_EQ(analogPublications(run)[1].t, 1101ms);
}

TEST(PlantModels, ALinkStartsMovingAfterItsDeadTime) {
    const RunResult run = play(configFrom(analog(
        R"([ { "link": { "from": "1.AO0", "to": "1.AI0", "delay_ms": 250 } } ])",
        R"([ { "at_ms": 1000, "event": { "id": 310, "value": 4.0 } }, { "at_ms": 2000, "end": true } ])")));
    // The target changes at 1250 ms; without a lag the input takes it at the next copy.
    EXPECT_EQ(moves(run), (std::vector<Move>{{1301ms, "1.AI0", to_ib_il(4.0f)}}));
}

TEST(PlantModels, ALinkFromADigitalOutputTakesItAsZeroOrOne) {
    const std::string config = R"({ "drivers": [
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
          "mappings": { "200": { "size": 1 } },
          "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "2", "InitVal": "0" } } } },
        { "driver": { "deviceType": "AXL_F_AI2_AO2", "params": { "Consecutive Number": "2" } },
          "mappings": { "300": { "size": 4 } },
          "services": { "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "1" } } } } ],
      "plant": [ { "link": { "from": "1.DO2", "to": "2.AI1", "gain": 2.5, "offset": 1.0 } } ],
      "scenario": [ { "at_ms": 500, "event": { "driver": 0, "id": 200, "value": 1 } }, { "at_ms": 700, "end": true } ] })";
    const RunResult run = play(configFrom(config));
    const auto found = moves(run);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0], (Move{0ms, "2.AI1", to_ib_il(1.0f)}));  // the rest state: 2.5 * 0 + 1
    EXPECT_EQ(found[1].value, to_ib_il(3.5f));
}

TEST(PlantModels, AnAnalogInputSaturatesInsteadOfWrapping) {
    const RunResult high = play(configFrom(analog(
        R"([ { "link": { "from": "1.AO0", "to": "1.AI0", "gain": 10.0 } } ])",
        R"([ { "at_ms": 100, "event": { "id": 310, "value": 5.0 } }, { "at_ms": 300, "end": true } ])")));
    EXPECT_EQ(moves(high).back().value, 65535);
    const RunResult low = play(configFrom(analog(
        R"([ { "link": { "from": "1.AO0", "to": "1.AI0", "offset": -3.0 } } ])",
        R"([ { "at_ms": 100, "event": { "id": 310, "value": 2.0 } }, { "at_ms": 300, "end": true } ])")));
    // -3 clamps to 0, the rest state of the bus: no move until the target is -1, still 0.
    EXPECT_TRUE(moves(low).empty());
}

TEST(PlantModels, ASquareSignalSwitchesADigitalInputWithinItsWindow) {
    const RunResult run = play(configFrom(digital(
        R"([ { "signal": { "to": "1.DI1", "shape": "square", "period_ms": 200, "duty": 0.25,
                           "from_ms": 100, "until_ms": 700 } } ])",
        R"([ { "at_ms": 1000, "end": true } ])")));
    EXPECT_EQ(moves(run), (std::vector<Move>{{100ms, "1.DI1", 1},
                                             {150ms, "1.DI1", 0},
                                             {300ms, "1.DI1", 1},
                                             {350ms, "1.DI1", 0},
                                             {500ms, "1.DI1", 1},
                                             {550ms, "1.DI1", 0}}));
}

TEST(PlantModels, ASquareSignalLeavesItsInputAsItIsAfterItsWindow) {
    const RunResult run = play(configFrom(digital(
        R"([ { "signal": { "to": "1.DI1", "shape": "square", "period_ms": 200, "from_ms": 100, "until_ms": 150 } } ])",
        R"([ { "at_ms": 500, "end": true } ])")));
    EXPECT_EQ(moves(run), (std::vector<Move>{{100ms, "1.DI1", 1}}));
}

TEST(PlantModels, ASineStartsAtItsMidpointRising) {
    const RunResult run = play(configFrom(analog(
        R"([ { "signal": { "to": "1.AI0", "shape": "sine", "low": 2.0, "high": 8.0, "period_ms": 4000 } } ])",
        R"([ { "at_ms": 1200, "end": true } ])")));
    EXPECT_EQ(publishedAt(run, 0ms), asTheDriverSeesIt(5.0));
    EXPECT_EQ(publishedAt(run, 101ms),
              asTheDriverSeesIt(5.0 + 3.0 * std::sin(2.0 * M_PI * (101.0 / 4000.0))));
    EXPECT_EQ(publishedAt(run, 501ms),
              asTheDriverSeesIt(5.0 + 3.0 * std::sin(2.0 * M_PI * (501.0 / 4000.0))));
}

TEST(PlantModels, ARampRisesOnceAndHoldsOrStartsAgainWithRepeat) {
    const std::string once =
        R"([ { "signal": { "to": "1.AI0", "shape": "ramp", "low": 1.0, "high": 9.0,
                                                "period_ms": 1000, "from_ms": 1 } } ])";
    const RunResult held = play(configFrom(analog(once, R"([ { "at_ms": 1700, "end": true } ])")));
    EXPECT_EQ(publishedAt(held, 501ms), asTheDriverSeesIt(1.0 + 8.0 * 0.5));
    EXPECT_EQ(analogPublications(held).back().value, asTheDriverSeesIt(9.0));
    EXPECT_EQ(analogPublications(held).back().t, 1001ms);

    std::string repeat = once;
    repeat.insert(repeat.find("\"from_ms\""), "\"repeat\": true, ");
    const RunResult again =
        play(configFrom(analog(repeat, R"([ { "at_ms": 1700, "end": true } ])")));
    EXPECT_EQ(publishedAt(again, 1501ms), asTheDriverSeesIt(1.0 + 8.0 * 0.5));
}

TEST(PlantModels, AnAnalogMoveIsShownOnlyWhenAPublicationFollowsIt) {
    const RunResult run = play(configFrom(analog(
        R"([ { "link": { "from": "1.AO0", "to": "1.AI0", "lag_ms": 1000 } } ])",
        R"([ { "at_ms": 1000, "event": { "id": 310, "value": 6.0 } }, { "at_ms": 1200, "end": true } ])")));
    const auto found = happeningsOf<Happening::PlantMove>(run);
    ASSERT_EQ(found.size(), 2U);  // at 1001 ms (within the dead band) and 1101 ms
    EXPECT_EQ(found[0].t, 1001ms);
    EXPECT_FALSE(found[0].what.shown);
    EXPECT_EQ(found[1].t, 1101ms);
    EXPECT_TRUE(found[1].what.shown);
}

TEST(PlantModels, TheSameConfigurationGivesTheSameTimelineEveryTime) {
    const auto config = configFrom(analog(
        R"([ { "link": { "from": "1.AO0", "to": "1.AI0", "lag_ms": 700, "delay_ms": 30 } } ])",
        R"([ { "at_ms": 100, "event": { "id": 310, "value": 7.5 } }, { "at_ms": 4000, "event": { "id": 310, "value": 1.0 } },
            { "at_ms": 9000, "end": true } ])"));
    EXPECT_EQ(axlsimtest::jsonTimeline(config, play(config)),
              axlsimtest::jsonTimeline(config, play(config)));
}

}  // namespace
