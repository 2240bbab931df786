// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include "TestRuns.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/render/JsonRenderer.h"
#include "axlsim/render/TextRenderer.h"
#include "hosting/FloatBytes.h"

namespace {

using axlsim::Happening;
using axlsimtest::configFrom;
using hosting::floatBytes;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using namespace std::chrono_literals;

const char* const kConfig = R"({ "driver": { "deviceType": "AXL_F_AI2_AO2" },
    "mappings": { "300": { "size": 4 }, "301": { "size": 2 }, "100": { "size": 1 } },
    "services": { "1": { "eventId": 300, "name": "level", "type": "AnalogIn" },
                  "2": { "eventId": 301, "type": "AnalogIn" },
                  "3": { "eventId": 100, "name": "in0", "type": "DigitalIn" } } })";

std::string json(const axlsim::Config& config, const Happening& happening) {
    std::ostringstream out;
    axlsim::JsonRenderer(out, config).happening(happening);
    return out.str();
}

std::string text(const axlsim::Config& config, const Happening& happening) {
    std::ostringstream out;
    axlsim::TextRenderer(out, config, false).happening(happening);
    return out.str();
}

TEST(JsonRenderer, APublicationOfAnAnalogInputCarriesItsFloat) {
    const auto config = configFrom(kConfig);
    const Happening publish{302ms, 0, Happening::Publish{300, 4, floatBytes(4.125f)}};
    EXPECT_EQ(json(config, publish),
              R"({"t_ms":302,"kind":"publish","id":300,"size":4,"bytes":"00008440","value":4.125})"
              "\n");
}

TEST(JsonRenderer, APublicationOfAnAnalogInputOfTwoBytesCarriesNoValue) {
    const auto config = configFrom(kConfig);
    const Happening publish{0ms, 0, Happening::Publish{301, 2, {0x00, 0x00}}};
    EXPECT_THAT(json(config, publish), Not(HasSubstr("value")));
}

TEST(JsonRenderer, APublicationOfADigitalInputCarriesItsFirstByte) {
    const auto config = configFrom(kConfig);
    const Happening publish{1ms, 0, Happening::Publish{100, 1, {0x01}}};
    EXPECT_THAT(json(config, publish), HasSubstr(R"("bytes":"01","value":1})"));
}

TEST(JsonRenderer, AStopOfTheDriverWideKindHasANullEventId) {
    const auto config = configFrom(kConfig);
    EXPECT_EQ(json(config, Happening{600ms, 0, Happening::Stop{"Null data pointer", std::nullopt}}),
              R"({"t_ms":600,"kind":"stop","message":"Null data pointer","event_id":null})"
              "\n");
}

TEST(JsonRenderer, NamesTheDriverOnlyWhenThereAreSeveral) {
    const auto several = configFrom(R"({ "drivers": [ { "driver": {} }, { "driver": {} } ] })");
    const Happening restart{5ms, 1, Happening::Restart{}};
    EXPECT_EQ(json(several, restart), R"({"t_ms":5,"kind":"restart","driver":1})"
                                      "\n");
    EXPECT_EQ(json(configFrom(kConfig), restart), R"({"t_ms":5,"kind":"restart"})"
                                                  "\n");
}

TEST(JsonRenderer, ShowsADigitalInputStepWithItsValue) {
    const auto config = configFrom(R"({ "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ] })");
    EXPECT_EQ(json(config, Happening{250ms, -1, Happening::Input{1, 3, 1}}),
              R"({"t_ms":250,"kind":"input","module":1,"pin":3,"value":1})"
              "\n");
}

TEST(JsonRenderer, ShowsAnAnalogInputStepWithItsRawWord) {
    const auto config = configFrom(R"({ "bus": [ "AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2" ] })");
    EXPECT_EQ(json(config, Happening{300ms, -1, Happening::Input{2, 1, 12375}}),
              R"({"t_ms":300,"kind":"input","module":2,"pin":1,"raw":12375})"
              "\n");
}

TEST(JsonRenderer, ShowsAnEventStepWithItsBytesAndSize) {
    const auto config = configFrom(kConfig);
    EXPECT_EQ(json(config,
                   Happening{500ms, 0, Happening::Event{101, 2, std::vector<uint8_t>{0x01, 0xff}}}),
              R"({"t_ms":500,"kind":"event","id":101,"size":2,"bytes":"01ff"})"
              "\n");
}

TEST(JsonRenderer, ShowsAnEventStepWithoutDataAsNull) {
    const auto several = configFrom(R"({ "drivers": [ { "driver": {} }, { "driver": {} } ] })");
    EXPECT_EQ(json(several, Happening{600ms, 1, Happening::Event{999, 0, std::nullopt}}),
              R"({"t_ms":600,"kind":"event","driver":1,"id":999,"size":0,"null":true})"
              "\n");
}

TEST(JsonRenderer, ShowsAPlcStepByTheOperationsName) {
    const auto config = configFrom(kConfig);
    EXPECT_EQ(json(config, Happening{700ms, -1, Happening::Plc{PlcOperation_StartWarm}}),
              R"({"t_ms":700,"kind":"plc","operation":"StartWarm"})"
              "\n");
}

TEST(JsonRenderer, ShowsANote) {
    const auto config = configFrom(kConfig);
    EXPECT_EQ(json(config, Happening{250ms, -1, Happening::Note{"a button"}}),
              R"({"t_ms":250,"kind":"note","text":"a button"})"
              "\n");
}

TEST(JsonRenderer, TheFinalLineCarriesTheEndTime) {
    const auto config = configFrom(kConfig);
    axlsim::RunResult result;
    result.drivers.push_back({true, false, false, 3});
    result.end = 2000ms;
    std::ostringstream out;
    axlsim::JsonRenderer(out, config).finish(result);
    EXPECT_THAT(out.str(), ::testing::StartsWith(R"({"t_ms":2000,"kind":"final","stopped":false)"));
}

TEST(TextRenderer, ShowsTheOutputByteAsBitsWithThePinsThatAreOn) {
    const auto config = configFrom(R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" } })");
    const std::string line = text(config, Happening{400ms, 0, Happening::BusWrite{{{0x28}}}});
    EXPECT_THAT(line, HasSubstr("400.0 ms"));
    EXPECT_THAT(line, HasSubstr("module 1 DO 00101000 (on: 3 5)"));
}

TEST(TextRenderer, ShowsAnAnalogInputInEngineeringUnits) {
    const auto config = configFrom(kConfig);
    EXPECT_THAT(text(config, Happening{0ms, 0, Happening::Publish{300, 4, floatBytes(4.125f)}}),
                HasSubstr("event 300 \"level\" = 4.125"));
}

TEST(TextRenderer, ShowsAnAnalogOutputWordWithItsValue) {
    const auto config = configFrom(kConfig);
    EXPECT_THAT(text(config, Happening{0ms, 0, Happening::BusWrite{{{0x1d, 0x4c, 0x00, 0x00}}}}),
                HasSubstr("AO0 raw 7500 (2.5)"));
}

TEST(TextRenderer, ShowsControlCharactersOfATextEscaped) {
    const auto config = configFrom(kConfig);
    const std::string line =
        text(config, Happening{0ms, 0, Happening::Note{std::string("a\0b\nc\x1b[31m", 10)}});
    EXPECT_THAT(line, HasSubstr("a\\x00b\\nc\\x1b[31m"));
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    EXPECT_EQ(line.find('\0'), std::string::npos);
    EXPECT_EQ(line.find('\x1b'), std::string::npos);
}

TEST(TextRenderer, ShowsC1ControlsAndBidirectionalOverridesEscaped) {
    const auto config = configFrom(kConfig);
    // CSI (U+009B), NEL (U+0085), RLO (U+202E), PDF (U+202C), RLI (U+2067), PDI (U+2069), LRM
    // (U+200E), RLM (U+200F), ALM (U+061C), LINE SEPARATOR (U+2028).
    const std::string line =
        text(config, Happening{0ms, 0,
                               Happening::Note{"a\u009b2Jb\u0085c\u202eevil\u202c \u2067x\u2069 "
                                               "\u200e\u200f\u061c\u2028"}});
    EXPECT_THAT(line, HasSubstr("a\\u009b2Jb\\u0085c\\u202eevil\\u202c \\u2067x\\u2069 "
                                "\\u200e\\u200f\\u061c\\u2028\n"));
}

TEST(TextRenderer, KeepsOtherUnicodeTextAndShowsBytesThatAreNotUtf8Escaped) {
    const auto config = configFrom(kConfig);
    EXPECT_THAT(
        text(config, Happening{0ms, 0, Happening::Note{"F\u00fcllstand \u6c34\u4f4d \U0001f6b0"}}),
        HasSubstr("F\u00fcllstand \u6c34\u4f4d \U0001f6b0\n"));
    // A lone continuation byte, a lead byte without its continuation, an overlong "/", an
    // encoded surrogate, a code point beyond U+10FFFF, and the C1 control written as one byte.
    EXPECT_THAT(text(config, Happening{0ms, 0,
                                       Happening::Note{"a\x80"
                                                       "b\xc3 c\xc0\xaf d\xed\xa0\x80 "
                                                       "e\xf4\x90\x80\x80 f\x9b"}}),
                HasSubstr("a\\x80b\\xc3 c\\xc0\\xaf d\\xed\\xa0\\x80 "
                          "e\\xf4\\x90\\x80\\x80 f\\x9b\n"));
}

TEST(TextRenderer, ShowsControlCharactersOfTheFileAndDescriptionEscaped) {
    const auto config = axlsim::configreader::readText(R"({ "description": "two\nlines" })",
                                                       std::string("a\tb.json"));
    std::ostringstream out;
    axlsim::TextRenderer(out, config, false).header(false);
    EXPECT_THAT(out.str(), HasSubstr("a\\tb.json: 1 driver"));
    EXPECT_THAT(out.str(), HasSubstr("two\\nlines\n"));
}

TEST(TextRenderer, SaysWhenTheExpectedStopDidNotCome) {
    const auto config = configFrom(R"({ "expect_stop": true })");
    axlsim::RunResult result;
    result.drivers.push_back({true, false, false, 0});
    result.wentAsExpected = false;
    std::ostringstream out;
    axlsim::TextRenderer(out, config, false).finish(result);
    std::string last = out.str();
    last.pop_back();
    last = last.substr(last.rfind('\n') + 1);
    EXPECT_EQ(last,
              "expected a stop (\"expect_stop\": true), but no driver stopped and no exception "
              "left one");
}

TEST(TextRenderer, EndsAnInterruptedRunWithALineThatSaysSo) {
    const auto config = configFrom(kConfig);
    std::ostringstream out;
    axlsim::TextRenderer(out, config, false).interrupted(5400ms, "SIGINT");
    EXPECT_EQ(out.str(),
              "interrupted by SIGINT at 5400.0 ms: the timeline above is the run so far\n");
}

TEST(JsonRenderer, AWallClockTimeShowsItsOwnDigitsWithoutBinaryArtefacts) {
    const auto config = configFrom(kConfig);
    // nlohmann's double text of 1013.889792 is 1013.8897920000001.
    const std::chrono::nanoseconds t{1013889792};
    EXPECT_EQ(json(config, Happening{t, 0, Happening::Note{"x"}}),
              R"({"t_ms":1013.889792,"kind":"note","text":"x"})"
              "\n");
    std::ostringstream out;
    axlsim::JsonRenderer renderer(out, config);
    axlsim::RunResult result;
    result.end = t;
    result.drivers.push_back({true, false, false, 0});
    renderer.finish(result);
    renderer.interrupted(std::chrono::nanoseconds{1000000743}, "SIGINT");
    EXPECT_THAT(out.str(), StartsWith(R"({"t_ms":1013.889792,"kind":"final",)"));
    EXPECT_THAT(out.str(), HasSubstr(R"({"t_ms":1000.000743,"kind":"interrupted",)"));
}

TEST(JsonRenderer, EndsAnInterruptedRunWithALineThatSaysSo) {
    const auto config = configFrom(kConfig);
    std::ostringstream out;
    axlsim::JsonRenderer(out, config).interrupted(5400ms, "SIGTERM");
    EXPECT_EQ(out.str(), R"({"t_ms":5400,"kind":"interrupted","signal":"SIGTERM"})"
                         "\n");
}

Happening::PlantMove wireMove() {
    Happening::PlantMove move;
    move.model = "wire";
    move.to = axlsim::Pin{1, axlsim::Pin::Kind::DigitalIn, 1};
    move.value = 1;
    move.from = axlsim::Pin{1, axlsim::Pin::Kind::DigitalOut, 0};
    return move;
}

Happening::PlantMove linkMove(bool shown) {
    Happening::PlantMove move;
    move.model = "link";
    move.to = axlsim::Pin{1, axlsim::Pin::Kind::AnalogIn, 0};
    move.value = 12375;
    move.from = axlsim::Pin{1, axlsim::Pin::Kind::AnalogOut, 1};
    move.shown = shown;
    return move;
}

TEST(TextRenderer, APlantLineSaysWhatMovedAnInputAndWhy) {
    const auto config = configFrom(kConfig);
    EXPECT_THAT(text(config, Happening{315ms, -1, wireMove()}),
                HasSubstr("plant     1.DI1 -> 1 (wire from 1.DO0)"));
    Happening::PlantMove square;
    square.model = "signal";
    square.shape = "square";
    square.to = axlsim::Pin{1, axlsim::Pin::Kind::DigitalIn, 3};
    EXPECT_THAT(text(config, Happening{1000ms, -1, square}),
                HasSubstr("plant     1.DI3 -> 0 (square signal)"));
    EXPECT_THAT(text(config, Happening{1401ms, -1, linkMove(true)}),
                HasSubstr("plant     1.AI0 -> raw 12375 (4.125) (link from 1.AO1)"));
}

TEST(TextRenderer, AnAnalogMoveThatNoPublicationFollowsHasNoLine) {
    EXPECT_EQ(text(configFrom(kConfig), Happening{1401ms, -1, linkMove(false)}), "");
    EXPECT_EQ(json(configFrom(kConfig), Happening{1401ms, -1, linkMove(false)}), "");
}

TEST(TextRenderer, AHostLineShowsTheRouteAndItsBytes) {
    EXPECT_THAT(text(configFrom(kConfig), Happening{310ms, 0, Happening::Routed{100, 200, {0x01}}}),
                HasSubstr("host      route 100 -> 200: 01"));
}

TEST(TextRenderer, AnAnalogRouteLineShowsTheValueItSendsAsAPublicationLineDoes) {
    const auto config = configFrom(R"({ "driver": { "deviceType": "AXL_F_AI2_AO2" },
        "mappings": { "300": { "size": 4 }, "302": { "size": 4 } },
        "services": { "1": { "eventId": 300, "type": "AnalogIn" },
                      "2": { "eventId": 302, "type": "AnalogOut" } } })");
    EXPECT_THAT(text(config, Happening{310ms, 0, Happening::Routed{300, 302, floatBytes(2.5f)}}),
                HasSubstr("host      route 300 -> 302: 2.5\n"));
    EXPECT_EQ(json(config, Happening{310ms, 0, Happening::Routed{300, 302, floatBytes(2.5f)}}),
              R"({"t_ms":310,"kind":"route","from":300,"to":302,"driver":0,"bytes":"00002040"})"
              "\n");
}

TEST(JsonRenderer, APlantLineNamesTheModelThePinsAndTheValue) {
    const auto config = configFrom(kConfig);
    EXPECT_EQ(json(config, Happening{315ms, -1, wireMove()}),
              R"({"t_ms":315,"kind":"plant","model":"wire","to":"1.DI1","value":1,"from":"1.DO0"})"
              "\n");
    EXPECT_EQ(
        json(config, Happening{1401ms, -1, linkMove(true)}),
        R"({"t_ms":1401,"kind":"plant","model":"link","to":"1.AI0","raw":12375,"from":"1.AO1"})"
        "\n");
}

TEST(JsonRenderer, ARouteLineNamesBothIdsTheReceivingDriverAndTheBytes) {
    EXPECT_EQ(json(configFrom(kConfig), Happening{310ms, 0, Happening::Routed{100, 200, {0x01}}}),
              R"({"t_ms":310,"kind":"route","from":100,"to":200,"driver":0,"bytes":"01"})"
              "\n");
}

}  // namespace
