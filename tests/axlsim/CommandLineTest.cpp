// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "Program.h"
#include "RunningProgram.h"
#include "Sanitizers.h"
#include "VcdReader.h"

namespace {

using axlsimtest::runProgram;
using axlsimtest::writeConfig;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using namespace std::chrono_literals;

// Bounds for a program under an emulator and the sanitizers; a healthy run takes a fraction.
constexpr auto kPatience = 120s;

const std::string kFeedbackLoop = AXLSIM_EXAMPLES "/feedback_loop.json";
const std::string kMistakes = AXLSIM_EXAMPLES "/mistakes.json";
const std::string kLevelControl = AXLSIM_EXAMPLES "/level_control.json";

std::string digitalConfig(const std::string& scenario, const std::string& extra = "") {
    return R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
                "mappings": { "200": { "size": 1 } },
                "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } },
                "scenario": )" +
           scenario + extra + "}";
}

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Whether a report holds `part`; a report is too large to show when it does not.
::testing::AssertionResult holds(const std::string& report, const std::string& part) {
    if (report.find(part) != std::string::npos) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "the report of " << report.size() << " bytes does not hold " << part;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        result.push_back(line);
    }
    return result;
}

TEST(CommandLine, RunExitsWith0WhenTheRunGoesAsTheConfigurationExpects) {
    const auto run = runProgram({"run", kFeedbackLoop});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out,
                HasSubstr("CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO1]"));
}

TEST(CommandLine, RunExitsWith1WhenTheDriverStopsUnexpectedly) {
    const auto config = writeConfig(
        "stop.json", digitalConfig(R"([ { "at_ms": 100, "event": { "id": 7, "value": 1 } } ])"));
    const auto run = runProgram({"run", config});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("\"Unsubscribed event received\""));
}

TEST(CommandLine, RunExitsWith1WhenAnExceptionLeavesTheDriver) {
    const auto config =
        writeConfig("throw.json", R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1" } })");
    const auto run = runProgram({"run", config, "--json"});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(
        run.out,
        HasSubstr(
            R"("kind":"exception","where":"create","type":"std::invalid_argument","what":"stoi")"));
}

TEST(CommandLine, RunExitsWith1WhenAnExpectedStopDoesNotCome) {
    const auto config = writeConfig("expect.json", digitalConfig("[]", R"(, "expect_stop": true)"));
    EXPECT_EQ(runProgram({"run", config}).status, 1);
}

TEST(CommandLine, RunExitsWith2ForAConfigurationItCannotReadAndSaysWhereAndWhy) {
    const auto config = writeConfig("bad.json", R"({ "driver": { "params": { "PinNum": 3 } } })");
    const auto run = runProgram({"run", config});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr(config + ": /driver/params/PinNum: expected a text"));
    EXPECT_EQ(run.out, "");
}

TEST(CommandLine, RunExitsWith2ForAMissingFile) {
    const auto run = runProgram({"run", "/nonexistent/config.json"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("/nonexistent/config.json"));
}

TEST(CommandLine, RunExitsWith2WhenTheDriverCannotBeLoaded) {
    const auto run = runProgram({"run", kFeedbackLoop, "--driver", "/nonexistent/libdriver.so"});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("cannot load the driver"));
}

TEST(CommandLine, RunLoadsTheDriverItIsGiven) {
    EXPECT_EQ(runProgram({"run", kFeedbackLoop, "--driver", AXLSIM_DRIVER}).status, 0);
}

TEST(CommandLine, RunWithJsonPrintsOneObjectPerLineEndingWithTheFinalState) {
    const auto run = runProgram({"run", kFeedbackLoop, "--json"});
    ASSERT_EQ(run.status, 0);
    const auto all = lines(run.out);
    ASSERT_GE(all.size(), 2U);
    for (const auto& line : all) {
        EXPECT_THAT(line, StartsWith("{"));
        EXPECT_THAT(line, EndsWith("}"));
    }
    EXPECT_THAT(
        all.back(),
        StartsWith(R"({"t_ms":1000,"kind":"final","stopped":false,"bus_outputs":{"1":"00"})"));
}

TEST(CommandLine, RunUntilEndsTheRunThere) {
    const auto run = runProgram({"run", kFeedbackLoop, "--json", "--until", "305"});
    ASSERT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr(R"("t_ms":302)"));
    EXPECT_THAT(run.out, ::testing::Not(HasSubstr(R"("t_ms":310)")));
}

TEST(CommandLine, RunWritesAValueChangeDump) {
    const std::string vcd = writeConfig("run.vcd", "");
    const auto run = runProgram({"run", kFeedbackLoop, "--vcd", vcd});
    ASSERT_EQ(run.status, 0);
    std::ifstream in(vcd);
    std::string first;
    std::getline(in, first);
    EXPECT_THAT(first, StartsWith("$comment axlsim:"));
    std::remove(vcd.c_str());
}

TEST(CommandLine, RunOnTheWallClockPlaysAShortScenario) {
    const auto config = writeConfig(
        "live.json",
        digitalConfig(
            R"([ { "at_ms": 50, "event": { "id": 200, "value": 1 } }, { "at_ms": 120, "end": true } ])"));
    const auto run = runProgram({"run", config, "--real-time", "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr(R"("kind":"bus_write","outputs":{"1":"01"})"));
    EXPECT_THAT(
        lines(run.out).back(),
        StartsWith(R"({"t_ms":120,"kind":"final","stopped":false,"bus_outputs":{"1":"01"})"));
}

TEST(CommandLine, CheckExitsWith0ForACleanConfiguration) {
    const auto run = runProgram({"check", kFeedbackLoop});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, HasSubstr("no problems found"));
}

TEST(CommandLine, CheckExitsWith1AndExplainsEveryMistake) {
    const auto run = runProgram({"check", kMistakes});
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("12 problems"));
    EXPECT_THAT(run.out, HasSubstr("throws std::invalid_argument (\"stoi\") out of initialize"));
}

TEST(CommandLine, CheckExitsWith2ForAConfigurationItCannotRead) {
    const auto config = writeConfig("broken.json", "{ \"driver\": ");
    const auto run = runProgram({"check", config});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("line 1, column"));
}

TEST(CommandLine, DemoRunsTheClosedLoopWithExplanations) {
    const auto run = runProgram({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("axlsim plays the host runtime"));
    EXPECT_THAT(run.out, HasSubstr("examples/closed_loop.json"));
    EXPECT_THAT(run.out, HasSubstr("plant     1.DI0 -> 1 (square signal)"));
    EXPECT_THAT(run.out, HasSubstr("host      route 100 -> 200: 01"));
    EXPECT_THAT(run.out, HasSubstr("plant     1.DI1 -> 1 (wire from 1.DO0)"));
    EXPECT_THAT(run.out, HasSubstr("module 1 DO 00100001 (on: 0 5)"));
}

#if AXLSIM_SERVE
TEST(CommandLine, DemoEndsWithHintsThatNameTheReportAndServe) {
    const auto run = runProgram({"demo"});
    EXPECT_EQ(run.status, 0) << run.err;
    const std::string hints = run.out.substr(run.out.rfind("Try your own configuration:"));
    EXPECT_THAT(hints, HasSubstr("axlsim run CONFIG.json --html run.html"));
    EXPECT_THAT(hints, HasSubstr("axlsim serve CONFIG.json"));
}

TEST(CommandLine, TheReportKeepsEveryTextOfTheRunOutOfTheHtmlParsersWay) {
    const std::string hostile = "<!--<script> </script> a & b > c \u2028 \u2029";
    const auto config = writeConfig(
        "hostile.json", digitalConfig(R"([ { "at_ms": 5, "note": ")" + hostile + R"(" } ])",
                                      R"(, "description": ")" + hostile + R"(")"));
    const std::string report = axlsimtest::temporaryPath("report.html");
    const auto run = runProgram({"run", config, "--json", "--html", report});
    ASSERT_EQ(run.status, 0) << run.err;
    std::ifstream in(report);
    const std::string page{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::string start = "const data = ";
    const auto from = page.find(start);
    ASSERT_NE(from, std::string::npos);
    const auto to = page.find(";\n", from);
    const std::string data = page.substr(from + start.size(), to - from - start.size());
    EXPECT_THAT(data, Not(HasSubstr("<!--")));
    EXPECT_THAT(data, Not(HasSubstr("<script")));
    EXPECT_THAT(data, Not(HasSubstr("</")));
    EXPECT_THAT(data, Not(HasSubstr("<")));
    EXPECT_THAT(data, Not(HasSubstr(">")));
    EXPECT_THAT(data, Not(HasSubstr("&")));
    EXPECT_THAT(data, Not(HasSubstr("\u2028")));
    EXPECT_THAT(data, Not(HasSubstr("\u2029")));
    // JSON reads the escapes back as the texts themselves.
    const auto json = nlohmann::json::parse(data);
    const std::string expected = "<!--<script> </script> a & b > c \u2028 \u2029";
    EXPECT_EQ(json["description"], expected);
    bool noteFound = false;
    for (const auto& line : json["timeline"]) {
        noteFound = noteFound || (line["kind"] == "note" && line["text"] == expected);
    }
    EXPECT_TRUE(noteFound) << data;
}
#endif

TEST(CommandLine, RunExitsWith2ForAPlantOrHostItCannotRunAndNamesThePointer) {
    const auto config = writeConfig(
        "two_models.json",
        digitalConfig(
            R"([ { "at_ms": 100, "end": true } ])",
            R"(, "plant": [ { "signal": { "to": "1.DI1", "shape": "square", "period_ms": 10 } },
                                      { "wire": { "from": "1.DO0", "to": "1.DI1" } } ])"));
    const auto run = runProgram({"run", config});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("two_models.json: /plant/1: \"1.DI1\" is driven by /plant/0"));
    const auto check = runProgram({"check", config});
    EXPECT_EQ(check.status, 1);
    EXPECT_THAT(check.out, HasSubstr("plant and host"));
}

TEST(CommandLine, RunExitsWith2ForAnUnknownPinAndNamesThePointer) {
    const auto config = writeConfig(
        "unknown_pin.json",
        digitalConfig(R"([ { "at_ms": 100, "end": true } ])",
                      R"(, "plant": [ { "wire": { "from": "1.DO0", "to": "1.AI0" } } ])"));
    const auto run = runProgram({"run", config});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("unknown_pin.json: /plant/0/wire/to: \"1.AI0\" is no pin"));
}

TEST(CommandLine, EveryCommandHasHelp) {
    for (const char* command : {"run", "check", "demo"}) {
        const auto run = runProgram({command, "--help"});
        EXPECT_EQ(run.status, 0) << command;
        EXPECT_THAT(run.out, HasSubstr("Usage:")) << command;
    }
}

TEST(CommandLine, WithoutACommandItSaysWhatIsMissing) {
    const auto run = runProgram({});
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("subcommand"));
}

TEST(CommandLine, VersionNamesTheVersionsOfAxlsimAndOfTheDriverItRuns) {
    const auto version = runProgram({"--version"});
    ASSERT_EQ(version.status, 0) << version.err;
    const auto all = lines(version.out);
    ASSERT_EQ(all.size(), 2U) << version.out;
    EXPECT_THAT(all[0], StartsWith("axlsim "));
    EXPECT_THAT(all[1], StartsWith("driver libplcnext_driver.so "));
    const std::string driverVersion = all[1].substr(all[1].rfind(' ') + 1);
    const auto run = runProgram({"run", kFeedbackLoop});
    EXPECT_THAT(run.out, HasSubstr("-Version [" + driverVersion + "]"));
}

TEST(CommandLine, RunReadsTheConfigurationFromStandardInput) {
    const auto run = runProgram({"run", "-", "--json"}, {kFeedbackLoop, ""});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(lines(run.out).back(), StartsWith(R"({"t_ms":1000,"kind":"final")"));
}

TEST(CommandLine, ALongRunShowsItsLinesAsItGoesAndSigintStopsItWithEverythingWritten) {
    const std::string vcd = axlsimtest::temporaryPath("run.vcd");
    axlsimtest::RunningProgram program(
        {"run", kFeedbackLoop, "--until", "1000000000000", "--vcd", vcd});
    // The run has 31 years to go: the scenario's last line comes only if output is written as
    // the run goes.
    ASSERT_TRUE(program.readUntil("800.0 ms  bus", kPatience)) << program.out() << program.err();
    program.signal(SIGINT);
    ASSERT_EQ(program.finish(kPatience), 130) << program.err();
    const auto all = lines(program.out());
    ASSERT_FALSE(all.empty());
    EXPECT_THAT(all.back(), StartsWith("interrupted by SIGINT at "));
    EXPECT_THAT(all.back(), EndsWith(" ms: the timeline above is the run so far"));
    EXPECT_THAT(program.out(), HasSubstr("the driver ran without a stop; 6 publications"));

    std::ifstream in(vcd);
    std::ostringstream text;
    text << in.rdbuf();
    const axlsimtest::VcdReader dump(text.str());
    EXPECT_EQ(dump.changesOf("axlsim.m1_AXL_F_DI8_1_DO8_1.out0").size(), 3U);
    std::remove(vcd.c_str());
}

TEST(CommandLine, SigtermStopsAJsonRunWithALastLineThatSaysSo) {
    axlsimtest::RunningProgram program(
        {"run", kFeedbackLoop, "--json", "--until", "1000000000000"});
    ASSERT_TRUE(program.readUntil(R"("t_ms":800)", kPatience)) << program.out() << program.err();
    program.signal(SIGTERM);
    ASSERT_EQ(program.finish(kPatience), 130) << program.err();
    const auto all = lines(program.out());
    ASSERT_GE(all.size(), 2U);
    EXPECT_THAT(all.back(), StartsWith(R"({"t_ms":)"));
    EXPECT_THAT(all.back(), EndsWith(R"(,"kind":"interrupted","signal":"SIGTERM"})"));
    EXPECT_THAT(all[all.size() - 2], HasSubstr(R"("kind":"final")"));
}

TEST(CommandLine, AClosedPipeStopsTheRunAtOnceWithACompleteVcdAndReport) {
    const std::string vcd = axlsimtest::temporaryPath("run.vcd");
    std::vector<std::string> arguments{"run",           kLevelControl, "--until",
                                       "1000000000000", "--vcd",       vcd};
#if AXLSIM_SERVE
    const std::string html = axlsimtest::temporaryPath("run.html");
    arguments.insert(arguments.end(), {"--html", html});
#endif
    axlsimtest::RunningProgram program(arguments);
    ASSERT_TRUE(program.readUntil("publish", kPatience)) << program.out() << program.err();
    // As `| head` does once it has its lines, or a pager that is quit.
    program.closeOutput();
    ASSERT_EQ(program.finish(kPatience), 2) << program.err();
    // The line, and nothing but what a sanitizer may add after it.
    EXPECT_THAT(program.err(), StartsWith("axlsim: cannot write the standard output: Broken pipe; "
                                          "the run stopped at "));
    EXPECT_THAT(program.err(), ::testing::ContainsRegex("the run stopped at [0-9]+ ms\n"));

    const axlsimtest::VcdReader dump(slurp(vcd));
    EXPECT_FALSE(dump.changesOf("axlsim.m2_AXL_F_AI2_AO2.ai0").empty());
#if AXLSIM_SERVE
    const std::string report = slurp(html);
    EXPECT_TRUE(holds(report, R"("interrupted":{"by":"a failed write to the standard output )"
                              R"x((Broken pipe)","t_ms":)x"));
    EXPECT_TRUE(holds(report, "</html>"));
#endif
}

TEST(CommandLine, AClosedPipeStopsARunThatHasNothingMoreToSay) {
    const std::string vcd = axlsimtest::temporaryPath("run.vcd");
    axlsimtest::RunningProgram program(
        {"run", kFeedbackLoop, "--until", "1000000000000", "--vcd", vcd});
    // The scenario's last line: then nothing for 31 years, which no write would tell.
    ASSERT_TRUE(program.readUntil("800.0 ms  bus", kPatience)) << program.out() << program.err();
    program.closeOutput();
    ASSERT_EQ(program.finish(kPatience), 2) << program.err();
    EXPECT_THAT(program.err(), HasSubstr("cannot write the standard output: Broken pipe"));
    const axlsimtest::VcdReader dump(slurp(vcd));
    EXPECT_EQ(dump.changesOf("axlsim.m1_AXL_F_DI8_1_DO8_1.out0").size(), 3U);
}

#if AXLSIM_SERVE
TEST(CommandLine, AnInterruptedRunSaysSoInItsReport) {
    const std::string html = axlsimtest::temporaryPath("run.html");
    axlsimtest::RunningProgram program(
        {"run", kFeedbackLoop, "--json", "--until", "1000000000000", "--html", html});
    ASSERT_TRUE(program.readUntil(R"("t_ms":800)", kPatience)) << program.out() << program.err();
    program.signal(SIGINT);
    ASSERT_EQ(program.finish(kPatience), 130) << program.err();
    const std::string report = slurp(html);
    EXPECT_TRUE(holds(report, R"("interrupted":{"by":"SIGINT","t_ms":)"));
    EXPECT_TRUE(holds(report, "The run was interrupted by"));
}
#endif

// Six hours rather than a day, so that the sanitizer and emulator builds run it in reasonable
// time; docs/performance.md has a day, a month and a year.
TEST(CommandLine, ARunOfSixHoursTakesNoMoreMemoryThanARunOfAnHour) {
    if (testsupport::builtWithAddressSanitizer() || testsupport::builtWithThreadSanitizer()) {
        GTEST_SKIP()
            << "AddressSanitizer and ThreadSanitizer keep freed memory in quarantine and "
               "shadow, so the resident set grows with what a run allocates, not with what "
               "it keeps";
    }
    const auto hour =
        runProgram({"run", kLevelControl, "--json", "--until", "3600000"}, {"", "/dev/null"});
    ASSERT_EQ(hour.status, 0) << hour.err;
    const auto hours =
        runProgram({"run", kLevelControl, "--json", "--until", "21600000"}, {"", "/dev/null"});
    ASSERT_EQ(hours.status, 0) << hours.err;
    // The whole timeline of the five hours more would be about 25 MB.
    EXPECT_LT(hours.peakKilobytes, hour.peakKilobytes + 8 * 1024)
        << "an hour: " << hour.peakKilobytes << " kB, six hours: " << hours.peakKilobytes << " kB";
}

#if AXLSIM_SERVE
// A 1 ms square signal on input 0: a line and a change of the waveforms each millisecond.
const char* const kSquareSignal =
    R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
         "mappings": { "100": { "size": 1 } },
         "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0" } } },
         "plant": [ { "signal": { "to": "1.DI0", "shape": "square", "period_ms": 2, "duty": 0.5 } } ] })";

TEST(CommandLine, TheReportOfALongRunKeepsTheStartAndTheEndAndSaysWhatItLeftOut) {
    const std::string html = axlsimtest::temporaryPath("run.html");
    const auto run = runProgram(
        {"run", writeConfig("square.json", kSquareSignal), "--until", "60000", "--html", html},
        {"", "/dev/null"});
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string report = slurp(html);
    // 60,000 moves of the input: the table keeps 20,000 lines, the waveforms at most two changes
    // of each signal in each 2,000th of the run.
    EXPECT_TRUE(holds(report, R"("first_lines":10000,"last_lines":10000,)"));
    EXPECT_TRUE(holds(report, R"("part_ms":30})"));
    EXPECT_TRUE(holds(report, "The timeline shows the first"));
    EXPECT_LT(report.size(), 8U * 1024 * 1024);
}
#endif

}  // namespace
