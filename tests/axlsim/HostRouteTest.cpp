// SPDX-License-Identifier: MIT
// The host's routes, run with the real drivers. Driver 0 serves the digital module at position
// 1: inputs 0 and 1 publish events 100 and 101 (at 0 and 1 ms, then every 100 ms from 2 ms),
// events 200 and 201 drive outputs 0 and 1, event 400 restarts. Driver 1 serves the analog
// module at position 2: channel 0 publishes event 300 (at 0 ms, then every 100 ms from 1 ms),
// event 310 drives output 0.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>

#include "TestRuns.h"
#include "hosting/FloatBytes.h"

namespace {

using axlsim::Happening;
using axlsim::RunResult;
using hosting::floatBytes;
using namespace axlsimtest;
using namespace std::chrono_literals;

RunResult run(const std::string& host, const std::string& scenario,
              const std::string& plant = "[]") {
    return play(configFrom(R"({ "drivers": [
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
          "mappings": { "100": { "size": 1 }, "101": { "size": 1 }, "200": { "size": 1 },
                        "201": { "size": 1 }, "400": { "size": 2 } },
          "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0" } },
                        "2": { "eventId": 101, "type": "DigitalIn", "params": { "PinNum": "1" } },
                        "3": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } },
                        "4": { "eventId": 201, "type": "DigitalOut", "params": { "PinNum": "1", "InitVal": "0" } },
                        "5": { "eventId": 400, "type": "RestartDevice" } } },
)" + std::string(axlsimtest::kAnalogDriverAtPosition2) +
                           R"( ],
      "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ],
      "plant": )" + plant + R"(, "host": )" +
                           host + R"(, "scenario": )" + scenario + "}"));
}

struct Sent {
    std::chrono::nanoseconds t;
    int driver;
    uint32_t id;
    std::vector<uint8_t> bytes;
    uint32_t size;
    bool operator==(const Sent&) const = default;
};

std::vector<Sent> events(const RunResult& result) {
    std::vector<Sent> found;
    for (const auto& event : happeningsOf<Happening::Event>(result)) {
        found.push_back({event.t, event.driver, event.what.id,
                         event.what.payload.value_or(std::vector<uint8_t>{}), event.what.size});
    }
    return found;
}

std::size_t indexOf(const RunResult& result, std::chrono::nanoseconds t, auto matches) {
    for (std::size_t i = 0; i < result.timeline.size(); ++i) {
        if (result.timeline[i].t == t && matches(result.timeline[i].what)) {
            return i;
        }
    }
    ADD_FAILURE() << "nothing found at " << t.count() << " ns";
    return 0;
}

TEST(HostRoutes, ARouteDeliversRightAfterThePublishingScanBeforeTheNextScan) {
    const RunResult result = run(
        R"([ { "route": { "from": 100, "to": 200 } } ])",
        R"([ { "at_ms": 150, "input": { "module": 1, "pin": 0, "value": 1 } }, { "at_ms": 400, "end": true } ])",
        R"([ { "wire": { "from": "1.DO0", "to": "1.DI1" } } ])");
    EXPECT_EQ(events(result), (std::vector<Sent>{{0ms, 0, 200, {0}, 1}, {202ms, 0, 200, {1}, 1}}));
    const auto published = indexOf(result, 202ms, [](const Happening::What& w) {
        return std::holds_alternative<Happening::Publish>(w);
    });
    const auto routed = indexOf(result, 202ms, [](const Happening::What& w) {
        return std::holds_alternative<Happening::Routed>(w);
    });
    const auto sent = indexOf(result, 202ms, [](const Happening::What& w) {
        return std::holds_alternative<Happening::Event>(w);
    });
    EXPECT_LT(published, routed);
    EXPECT_EQ(routed + 1, sent);
    // The output came back on input 1 before the next scan, which published it.
    const auto publications = happeningsOf<Happening::Publish>(result);
    EXPECT_EQ(publications.back().t, 302ms);
    EXPECT_EQ(publications.back().what.id, 101U);
}

TEST(HostRoutes, ARouteDeliversItsDelayAfterThePublication) {
    const RunResult result = run(
        R"([ { "route": { "from": 100, "to": 200, "delay_ms": 8 } } ])",
        R"([ { "at_ms": 150, "input": { "module": 1, "pin": 0, "value": 1 } }, { "at_ms": 400, "end": true } ])");
    EXPECT_EQ(events(result), (std::vector<Sent>{{8ms, 0, 200, {0}, 1}, {210ms, 0, 200, {1}, 1}}));
}

TEST(HostRoutes, InvertSendsTheOtherDigitalValue) {
    const RunResult result = run(
        R"([ { "route": { "from": 100, "to": 200, "map": "invert" } } ])",
        R"([ { "at_ms": 150, "input": { "module": 1, "pin": 0, "value": 1 } }, { "at_ms": 300, "end": true } ])");
    EXPECT_EQ(events(result), (std::vector<Sent>{{0ms, 0, 200, {1}, 1}, {202ms, 0, 200, {0}, 1}}));
}

TEST(HostRoutes, RoutesFromOnePublicationFireInTheOrderOfTheList) {
    const RunResult result = run(
        R"([ { "route": { "from": 100, "to": 201 } }, { "route": { "from": 100, "to": 200 } } ])",
        R"([ { "at_ms": 50, "end": true } ])");
    const auto routed = happeningsOf<Happening::Routed>(result);
    ASSERT_EQ(routed.size(), 2U);
    EXPECT_EQ(routed[0].what.to, 201U);
    EXPECT_EQ(routed[1].what.to, 200U);
}

TEST(HostRoutes, DeliveriesDueAtOneTimeGoInTheOrderOfTheirPublications) {
    const RunResult result = run(
        R"([ { "route": { "from": 100, "to": 200, "delay_ms": 100 } }, { "route": { "from": 101, "to": 201 } } ])",
        R"([ { "at_ms": 150, "input": { "module": 1, "pin": 0, "value": 1 } },
             { "at_ms": 250, "input": { "module": 1, "pin": 1, "value": 1 } }, { "at_ms": 400, "end": true } ])");
    std::vector<uint32_t> at302;
    for (const Sent& sent : events(result)) {
        if (sent.t == 302ms) {
            at302.push_back(sent.id);
        }
    }
    EXPECT_EQ(at302, (std::vector<uint32_t>{200, 201}));
}

// Driver 1's channel 0 reads `values` at 150, 250, ... ms; each is published at the scan after.
std::string steps(const std::vector<double>& values) {
    std::string text = "[ ";
    int t = 150;
    for (double value : values) {
        text += R"({ "at_ms": )" + std::to_string(t) +
                R"(, "input": { "module": 2, "pin": 0, "value": )" + std::to_string(value) +
                " } }, ";
        t += 100;
    }
    return text + R"({ "at_ms": )" + std::to_string(t) + R"(, "end": true } ])";
}

std::vector<std::vector<uint8_t>> payloadsTo(const RunResult& result, uint32_t id) {
    std::vector<std::vector<uint8_t>> found;
    for (const Sent& sent : events(result)) {
        if (sent.id == id) {
            found.push_back(sent.bytes);
        }
    }
    return found;
}

// A route from driver 1's channel 0 to output 0, and the payloads it sends to 200 for a run of
// values.
struct SwitchingRoute {
    const char* name;
    const char* route;
    std::vector<double> values;
    std::vector<std::vector<uint8_t>> sent;
    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const SwitchingRoute& row) {
        return out << row.name;
    }
};

class HostRouteSwitching : public testing::TestWithParam<SwitchingRoute> {};

TEST_P(HostRouteSwitching, SendsWhatItsMapMakesOfEachValue) {
    const RunResult result = run(GetParam().route, steps(GetParam().values));
    EXPECT_EQ(payloadsTo(result, 200), GetParam().sent);
}

INSTANTIATE_TEST_SUITE_P(
    HostRoutes, HostRouteSwitching,
    testing::Values(
        SwitchingRoute{
            "AboveWithHysteresisSwitchesOnAboveTheThresholdAndOffBelowItLessTheHysteresis",
            R"([ { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "above", "threshold": 5.0, "hysteresis": 2.0 } } ])",
            {6.0, 4.0, 2.5, 4.0, 5.5},
            {{0}, {1}, {1}, {0}, {0}, {1}}},
        SwitchingRoute{
            "BelowWithHysteresisSwitchesOnBelowTheThresholdAndOffAboveItPlusTheHysteresis",
            R"([ { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "below", "threshold": 3.0, "hysteresis": 4.0 } } ])",
            {2.0, 5.0, 8.0, 5.0, 2.5},
            {{1}, {1}, {1}, {0}, {0}, {1}}},
        SwitchingRoute{
            "AboveWithoutHysteresisIsOnOnlyStrictlyAboveTheThreshold",
            R"([ { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "above", "threshold": 5.0 } } ])",
            {6.0, 5.0, 7.0, 4.5},
            {{0}, {1}, {0}, {1}, {0}}},
        SwitchingRoute{
            "OnChangeSendsOnlyWhatDiffersFromTheRoutesLastDelivery",
            R"([ { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "above", "threshold": 5.0,
                          "hysteresis": 2.0, "on_change": true } } ])",
            {6.0, 4.0, 2.5, 4.0, 5.5},
            {{0}, {1}, {0}, {1}}}),
    [](const testing::TestParamInfo<SwitchingRoute>& info) {
        return std::string(info.param.name);
    });

TEST(HostRoutes, ScaleSendsGainTimesTheValuePlusOffsetAsAFloat) {
    const RunResult result = run(
        R"([ { "route": { "from": 300, "from_driver": 1, "to": 310, "to_driver": 1, "map": "scale", "gain": 0.5, "offset": 1.0 } } ])",
        steps({6.0}));
    const auto sent = events(result);
    ASSERT_EQ(sent.size(), 2U);
    EXPECT_EQ(sent[1], (Sent{201ms, 1, 310, floatBytes(4.0f), 4}));
}

TEST(HostRoutes, CopyTakesAnAnalogValueAsItIsAndADigitalOneAsZeroOrOne) {
    const RunResult analog =
        run(R"([ { "route": { "from": 300, "from_driver": 1, "to": 310, "to_driver": 1 } } ])",
            steps({4.5}));
    const auto published = happeningsOf<Happening::Publish>(analog);
    EXPECT_EQ(events(analog).back().bytes, published.back().what.bytes);

    const RunResult digital =
        run(R"([ { "route": { "from": 100, "to": 310, "to_driver": 1 } } ])",
            R"([ { "at_ms": 150, "input": { "module": 1, "pin": 0, "value": 1 } },
                                       { "at_ms": 300, "end": true } ])");
    EXPECT_EQ(payloadsTo(digital, 310),
              (std::vector<std::vector<uint8_t>>{floatBytes(0.0f), floatBytes(1.0f)}));
}

TEST(HostRoutes, ARestartRouteSendsOneByteZeroWithTheMappingsSize) {
    const RunResult result = run(R"([ { "route": { "from": 100, "to": 400 } } ])",
                                 R"([ { "at_ms": 50, "end": true } ])");
    EXPECT_EQ(events(result), (std::vector<Sent>{{0ms, 0, 400, {0}, 2}}));
    EXPECT_EQ(result.restarts, 1);
}

TEST(HostRoutes, ARouteToAnIdThatNoServiceTakesStopsTheDriver) {
    const RunResult result = run(R"([ { "route": { "from": 100, "to": 999 } } ])",
                                 R"([ { "at_ms": 50, "end": true } ])");
    const auto failure = axlsimtest::firstFailure(result, 0);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->stopMessage, "Unsubscribed event received");
}

TEST(HostRoutes, ARouteFromAnIdThatNothingPublishesNeverFires) {
    const RunResult result = run(R"([ { "route": { "from": 555, "to": 200 } } ])",
                                 R"([ { "at_ms": 500, "end": true } ])");
    EXPECT_TRUE(happeningsOf<Happening::Routed>(result).empty());
}

TEST(HostRoutes, TheSameClosedLoopGivesTheSameTimelineEveryTime) {
    const auto config = configFrom(R"({ "drivers": [
        { "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
          "mappings": { "200": { "size": 1 } },
          "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } } },
        { "driver": { "deviceType": "AXL_F_AI2_AO2", "params": { "Consecutive Number": "2" } },
          "mappings": { "300": { "size": 4 } },
          "services": { "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "0" } } } } ],
      "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ],
      "plant": [ { "link": { "from": "1.DO0", "to": "2.AI0", "gain": 10.0, "lag_ms": 5000 } } ],
      "host": [ { "route": { "from": 300, "from_driver": 1, "to": 200, "map": "below", "threshold": 3.0,
                             "hysteresis": 4.0, "on_change": true } } ],
      "scenario": [ { "at_ms": 60000, "end": true } ] })");
    const RunResult first = play(config);
    EXPECT_GE(happeningsOf<Happening::Routed>(first).size(), 4U);
    EXPECT_EQ(axlsimtest::jsonTimeline(config, first),
              axlsimtest::jsonTimeline(config, play(config)));
}

}  // namespace
