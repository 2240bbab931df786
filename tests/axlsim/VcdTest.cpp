// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "TestRuns.h"
#include "VcdReader.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/render/VcdWriter.h"

namespace {

using axlsim::Happening;
using axlsimtest::VcdReader;
using Change = VcdReader::Change;

struct Dumped {
    axlsim::RunResult run;
    VcdReader vcd;
};

Dumped dumpOf(const char* example) {
    const auto config = axlsim::configreader::readFile(std::string(AXLSIM_EXAMPLES "/") + example);
    axlsim::RunResult run = axlsimtest::play(config);
    std::ostringstream out;
    axlsim::writeVcd(out, config, run);
    return Dumped{std::move(run), VcdReader(out.str())};
}

TEST(Vcd, DeclaresEveryPinOfEveryModuleAndEveryPublishedEvent) {
    const Dumped dumped = dumpOf("two_drivers.json");
    const VcdReader& vcd = dumped.vcd;
    EXPECT_EQ(vcd.timescale(), "1us");
    for (int pin = 0; pin < 8; ++pin) {
        ASSERT_NE(vcd.variable("axlsim.m1_AXL_F_DI8_1_DO8_1.in" + std::to_string(pin)), nullptr);
        ASSERT_NE(vcd.variable("axlsim.m1_AXL_F_DI8_1_DO8_1.out" + std::to_string(pin)), nullptr);
    }
    for (const char* channel : {"ai0", "ai1", "ao0", "ao1"}) {
        EXPECT_EQ(vcd.variable(std::string("axlsim.m2_AXL_F_AI2_AO2.") + channel)->width, 16);
    }
    EXPECT_EQ(vcd.variable("axlsim.driver0.ev100")->type, "wire");
    EXPECT_EQ(vcd.variable("axlsim.driver1.ev300")->type, "real");
    EXPECT_EQ(vcd.variable("axlsim.driver1.ev301")->type, "real");
}

// The changes of one variable in the dump of an example: their times in microseconds and their
// values.
struct VariableChanges {
    const char* name;
    const char* example;
    const char* variable;
    std::vector<std::pair<int64_t, std::string>> changes;
    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const VariableChanges& row) {
        return out << row.name;
    }
};

class VcdChanges : public testing::TestWithParam<VariableChanges> {};

TEST_P(VcdChanges, AreDumpedAtTheirTimes) {
    std::vector<Change> expected;
    for (const auto& [time, value] : GetParam().changes) {
        expected.push_back(Change{time, GetParam().variable, value});
    }
    EXPECT_EQ(dumpOf(GetParam().example).vcd.changesOf(GetParam().variable), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Vcd, VcdChanges,
    testing::Values(VariableChanges{"ShowsAnOutputChangeAtTheTimeOfItsBusWrite",
                                    "feedback_loop.json",
                                    "axlsim.m1_AXL_F_DI8_1_DO8_1.out0",
                                    {{0, "0"}, {310000, "1"}, {610000, "0"}}},
                    VariableChanges{"ShowsAnInputChangeAtTheTimeOfItsStep",
                                    "two_drivers.json",
                                    "axlsim.m2_AXL_F_AI2_AO2.ai0",
                                    {{0, "b0000000000000000"}, {150000, "b0011010010111100"}}},
                    VariableChanges{"ADigitalEventIsUnknownUntilItsFirstPublication",
                                    "restart.json",
                                    "axlsim.events.ev100",
                                    {{0, "x"}, {0, "0"}, {701000, "1"}}}),
    [](const testing::TestParamInfo<VariableChanges>& info) {
        return std::string(info.param.name);
    });

TEST(Vcd, ShowsEveryPublishedAnalogValueOfTheTimeline) {
    const Dumped dumped = dumpOf("analog_ramp.json");
    std::vector<Change> published;
    for (const Happening& happening : dumped.run.timeline) {
        const auto* publish = std::get_if<Happening::Publish>(&happening.what);
        if (publish == nullptr) {
            continue;
        }
        float value = 0.0f;
        std::memcpy(&value, publish->bytes.data(), sizeof value);
        published.push_back(Change{happening.t.count() / 1000, "axlsim.events.ev300",
                                   "r" + axlsim::floatText(value)});
    }
    EXPECT_EQ(published.size(), 6U);
    EXPECT_EQ(dumped.vcd.changesOf("axlsim.events.ev300"), published);
}

TEST(Vcd, AFileNameThatLooksLikeVcdSyntaxCannotBreakTheHeader) {
    const auto config = axlsim::configreader::readText(
        R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } } })",
        "/tmp/a $end $var wire 1 ! x $end\n$enddefinitions $end/config.json");
    const axlsim::RunResult run = axlsimtest::play(config);
    std::ostringstream out;
    axlsim::writeVcd(out, config, run);
    const VcdReader vcd(out.str());
    EXPECT_EQ(vcd.variables().size(), 16U);
    EXPECT_NE(vcd.variable("axlsim.m1_AXL_F_DI8_1_DO8_1.in0"), nullptr);
    const std::string header = out.str().substr(0, out.str().find('\n'));
    EXPECT_EQ(header,
              "$comment axlsim: /tmp/a \\x24end \\x24var wire 1 ! x \\x24end\\n\\x24enddefinitions "
              "\\x24end/config.json $end");
}

TEST(Vcd, ShowsEveryWordThatThePlantGivesAnAnalogInputAtEachCopyWhereItChanged) {
    const Dumped dumped = dumpOf("valve_position.json");
    std::vector<Change> moved{{0, "axlsim.m1_AXL_F_AI2_AO2.ai0", "b0000000000000000"}};
    int hidden = 0;
    for (const auto& move : axlsimtest::happeningsOf<Happening::PlantMove>(dumped.run)) {
        std::string bits = "b";
        for (int bit = 15; bit >= 0; --bit) {
            bits += ((move.what.value >> bit) & 1) != 0 ? '1' : '0';
        }
        moved.push_back(Change{move.t.count() / 1000, "axlsim.m1_AXL_F_AI2_AO2.ai0", bits});
        hidden += move.what.shown ? 0 : 1;
    }
    // Some moves stay within the driver's dead band: no publication shows them, the VCD does.
    EXPECT_GT(hidden, 0);
    EXPECT_EQ(dumped.vcd.changesOf("axlsim.m1_AXL_F_AI2_AO2.ai0"), moved);
}

TEST(Vcd, ShowsADigitalInputThatAWireMoves) {
    const Dumped dumped = dumpOf("closed_loop.json");
    const auto changes = dumped.vcd.changesOf("axlsim.m1_AXL_F_DI8_1_DO8_1.in1");
    ASSERT_GE(changes.size(), 2U);
    EXPECT_EQ(changes[1], (Change{315000, "axlsim.m1_AXL_F_DI8_1_DO8_1.in1", "1"}));
}

}  // namespace
