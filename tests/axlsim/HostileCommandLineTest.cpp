// SPDX-License-Identifier: MIT
// The hostile inputs of the command line, each run against the built axlsim as a user would run
// it: what it must refuse, with which message and exit status, and what it must not do (hang,
// fill the memory, drop part of a configuration, exit 0 on output it could not write).

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

#include "Program.h"

namespace {

#if AXLSIM_SERVE
constexpr const char* kCommands = "run, check, demo, serve";
#else
constexpr const char* kCommands = "run, check, demo";
#endif

using axlsimtest::Redirect;
using axlsimtest::runProgram;
using axlsimtest::writeConfig;
using ::testing::HasSubstr;
using ::testing::Not;

const std::string kFeedbackLoop = AXLSIM_EXAMPLES "/feedback_loop.json";

struct HostileCase {
    const char* name;
    // "$CONFIG" stands for a file with `config` in it, "$OUTPUT" for a fresh file to write.
    std::vector<std::string> arguments;
    std::string config;
    int status;
    std::string err;  // a part of standard error, "" for none
    std::string out;  // a part of standard output, "" for none
    Redirect redirect{};
    bool failsAfterTheRun = false;  // else a status of 2 comes before any line of a timeline
};

std::ostream& operator<<(std::ostream& out, const HostileCase& hostile) {
    return out << hostile.name;
}

const char* const kDigital =
    R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
    "mappings": { "200": { "size": 1 } },
    "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } } } })";

// A button (input 0, event 100), a lamp (output 0, event 200) and a restart (event 300).
const char* const kButtonLampRestart =
    R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
    "mappings": { "100": { "size": 1 }, "200": { "size": 1 }, "300": { "size": 1 } },
    "services": { "1": { "eventId": 100, "type": "DigitalIn", "params": { "PinNum": "0" } },
                  "2": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0" } },
                  "3": { "eventId": 300, "type": "RestartDevice" } } })";

const std::string kUntilRange =
    " is not a time: expected whole milliseconds in decimal digits, from 0 to 10^12 ms (about 31 "
    "years)";

// A command line that axlsim refuses with status 2 and this error, before any run.
HostileCase refused(const char* name, std::vector<std::string> arguments, std::string err) {
    return {name, std::move(arguments), "", 2, std::move(err), ""};
}

// A configuration in which check finds a problem, and a part of the report that names it.
HostileCase checkFinds(const char* name, std::string config, std::string out) {
    return {name, {"check", "$CONFIG"}, std::move(config), 1, "", std::move(out)};
}

// A --until that is not a time in the accepted range.
HostileCase untilRefused(const char* name, const std::string& until) {
    return refused(name, {"run", kFeedbackLoop, "--until", until},
                   "--until: " + until + kUntilRange);
}

// The outputs of a run: each refused before the run when it cannot be written, a standard
// output that fails noticed at once.
std::vector<HostileCase> outputCases() {
    return {
        {"JsonRunOnAFullDevice",
         {"run", kFeedbackLoop, "--json"},
         "",
         2,
         "cannot write the standard output: No space left on device",
         "",
         Redirect{"", "/dev/full"}},
        {"LongRunOnAFullDeviceStopsAtOnce",
         {"run", kFeedbackLoop, "--until", "86400000"},
         "",
         2,
         "cannot write the standard output: No space left on device; the run stopped at ",
         "",
         Redirect{"", "/dev/full"}},
        {"DemoOnAFullDevice",
         {"demo"},
         "",
         2,
         "cannot write the standard output: No space left on device",
         "",
         Redirect{"", "/dev/full"}},
        {"VersionOnAFullDevice",
         {"--version"},
         "",
         2,
         "cannot write the standard output: No space left on device",
         "",
         Redirect{"", "/dev/full"}},
        {"HelpOnAFullDevice",
         {"run", "--help"},
         "",
         2,
         "cannot write the standard output: No space left on device",
         "",
         Redirect{"", "/dev/full"}},
        refused("VcdOntoStandardOutput", {"run", kFeedbackLoop, "--vcd", "-"},
                "axlsim: --vcd -: the standard output carries the timeline, so this output needs "
                "a file; ./- names a file called \"-\""),
        {"VcdOntoTheConfiguration",
         {"run", "$CONFIG", "--vcd", "$CONFIG"},
         kDigital,
         2,
         " is the configuration, which the output would overwrite; give the output a file of its "
         "own",
         ""},
    };
}

#if AXLSIM_SERVE
// The same for the HTML report.
std::vector<HostileCase> reportCases() {
    return {
        refused("HtmlInAMissingFolderIsRefusedBeforeTheRun",
                {"run", kFeedbackLoop, "--html", "/nonexistent/folder/run.html"},
                "cannot write /nonexistent/folder/run.html: No such file or directory"),
        refused("HtmlOntoAFolderIsRefusedBeforeTheRun",
                {"run", kFeedbackLoop, "--html", AXLSIM_EXAMPLES},
                "cannot write " AXLSIM_EXAMPLES ": Is a directory"),
        refused("HtmlOntoStandardOutput", {"run", kFeedbackLoop, "--html", "-"},
                "axlsim: --html -: the standard output carries the timeline"),
        refused("VcdAndHtmlOnOneFile",
                {"run", kFeedbackLoop, "--vcd", "$OUTPUT", "--html", "$OUTPUT"},
                " name the same file, which would keep only one of them; give each output a file "
                "of its own"),
    };
}
#endif

std::vector<HostileCase> cases() {
    std::vector<HostileCase> all = outputCases();
#if AXLSIM_SERVE
    const std::vector<HostileCase> report = reportCases();
    all.insert(all.end(), report.begin(), report.end());
#endif
    std::vector<HostileCase> rest = {
        refused("UntilBeyondTheLongestRun", {"run", kFeedbackLoop, "--until", "9223372036855"},
                "--until: 9223372036855 ms is beyond the longest run, 10^12 ms (about 31 years)"),
        refused("UntilFarBeyondTheLongestRun",
                {"run", kFeedbackLoop, "--until", "99999999999999999999999"},
                "--until: 99999999999999999999999 ms is beyond the longest run"),
        untilRefused("UntilInExponentNotation", "1e22"),
        untilRefused("UntilNegative", "-5"),
        untilRefused("UntilNotANumber", "abc"),
        untilRefused("UntilInfinite", "inf"),
        untilRefused("UntilInHexadecimal", "0x10"),
        {"UntilWithALeadingZeroIsDecimal",
         {"run", kFeedbackLoop, "--json", "--until", "010"},
         "",
         0,
         "",
         R"({"t_ms":10,"kind":"final")"},
        refused("ConfigurationFromDevZero", {"run", "/dev/zero"},
                "/dev/zero: is not a regular file"),
        refused("ConfigurationFromDevUrandom", {"check", "/dev/urandom"},
                "/dev/urandom: is not a regular file"),
        refused("ConfigurationIsADirectory", {"run", AXLSIM_EXAMPLES},
                AXLSIM_EXAMPLES ": is a directory"),
        {"ConfigurationFromStandardInput",
         {"check", "-"},
         "",
         0,
         "",
         "standard input: no problems found",
         Redirect{kFeedbackLoop, ""}},
        {"ServiceKeyGivenTwice",
         {"check", "$CONFIG"},
         R"({ "services": {
              "1": { "eventId": 100, "type": "DigitalIn" },
              "1": { "eventId": 101, "type": "DigitalIn" } } })",
         2,
         ": /services/1: the key \"1\" is given twice in /services, on line 2 and on line 3",
         ""},
        {"MappingsGivenTwice",
         {"run", "$CONFIG"},
         R"({ "mappings": { "100": { "size": 1 } }, "mappings": { "101": { "size": 1 } } })",
         2,
         ": /mappings: the key \"mappings\" is given twice in the top level",
         ""},
        {"UnterminatedComment",
         {"check", "$CONFIG"},
         "{\n  /* " + std::string(100000, 'x'),
         2,
         "config.json: line 2, column 3: the comment that opens here has no end: missing closing "
         "'*/'; last read: '{",
         ""},
        {"VcdOnAFullDevice",
         {"run", kFeedbackLoop, "--vcd", "/dev/full"},
         "",
         2,
         "cannot write /dev/full: No space left on device",
         "",
         {},
         true},
        refused("VcdInAMissingFolderIsRefusedBeforeTheRun",
                {"run", kFeedbackLoop, "--vcd", "/nonexistent/folder/run.vcd"},
                "cannot write /nonexistent/folder/run.vcd: No such file or directory"),
        {"StandardOutputOnAFullDevice",
         {"run", kFeedbackLoop},
         "",
         2,
         "cannot write the standard output: No space left on device",
         "",
         Redirect{"", "/dev/full"}},
        {"CheckOnAFullDevice",
         {"check", kFeedbackLoop},
         "",
         2,
         "cannot write the standard output",
         "",
         Redirect{"", "/dev/full"}},
        {"ControlCharactersInANote",
         {"run", "$CONFIG"},
         std::string(kDigital).insert(
             1, R"("scenario": [ { "at_ms": 5, "note": "a\u0000b\u001b[2J" } ], )"),
         0,
         "",
         "a\\x00b\\x1b[2J"},
        {"C1AndBidirectionalControlsInANote",
         {"run", "$CONFIG"},
         std::string(kDigital).insert(
             1,
             R"("scenario": [ { "at_ms": 5, "note": "a\u009b2Jb\u202ec\u2066d F\u00fcllstand \u6c34\u4f4d" } ], )"),
         0,
         "",
         "a\\u009b2Jb\\u202ec\\u2066d F\u00fcllstand \u6c34\u4f4d\n"},
        {"BidirectionalOverrideInAnErrorMessage",
         {"run", "$CONFIG"},
         R"({ "bus": [ "AXL\u202eX" ] })",
         2,
         "/bus/0: unknown module type \"AXL\\u202eX\"",
         ""},
        {"ExpectedStopThatDoesNotCome",
         {"run", "$CONFIG"},
         std::string(kDigital).insert(1, R"("expect_stop": true, )"),
         1,
         "",
         "expected a stop (\"expect_stop\": true), but no driver stopped and no exception left "
         "one\n"},
        {"ExpectedStopThatDoesNotComeInJson",
         {"run", "$CONFIG", "--json"},
         std::string(kDigital).insert(1, R"("expect_stop": true, )"),
         1,
         "axlsim: expected a stop (\"expect_stop\": true), but no driver stopped",
         ""},
        {"RunOnAConfigurationCheckRejects",
         {"run", "$CONFIG"},
         R"({ "driver": { "deviceType": "AXL_F_AI2_AO2", "params": { "Consecutive Number": "1" } },
              "mappings": { "300": { "size": 1 } },
              "services": { "1": { "eventId": 300, "type": "AnalogIn", "params": { "PinNum": "0" } } } })",
         0,
         "axlsim: 1 problem that axlsim check explains; running anyway",
         ""},
        checkFinds(
            "MisspeltServiceKey",
            R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
              "mappings": { "200": { "size": 1 } },
              "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVal": "0", "InitVall": "1" } } } })",
            "InitVall: not a key the driver reads; InitVal, which it reads, is given already"),
        checkFinds(
            "MisspeltServiceKeyAlone",
            R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1" } },
             "mappings": { "200": { "size": 1 } },
             "services": { "1": { "eventId": 200, "type": "DigitalOut", "params": { "PinNum": "0", "InitVall": "1" } } } })",
            "InitVall: not a key the driver reads; did you mean InitVal?"),
        checkFinds(
            "MisspeltDriverKey",
            R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1", "Consecutive Nr": "1" } } })",
            "Consecutive Nr: not a key the driver reads; Consecutive Number, which it reads, is "
            "given "
            "already\n    driver:  never reads it, so it has no effect\n    fix:     remove it\n"),
        checkFinds(
            "LongValueInACheckMessage",
            R"({ "driver": { "deviceType": "AXL_F_DI8_1_DO8_1", "params": { "Consecutive Number": "1)" +
                std::string(100000, '0') + R"(x" } } })",
            "\"Consecutive Number\" is \"1" + std::string(59, '0') + "...\" (100002 characters)"),
        checkFinds(
            "TwoRoutesToOneOutput",
            std::string(kButtonLampRestart)
                .insert(1, R"("host": [ { "route": { "from": 100, "to": 200, "map": "invert" } },
                                   { "route": { "from": 100, "to": 200 } } ], )"),
            "/host/1 (route 100 -> 200)\n    problem: event 200 of driver 0 (the byte of a "
            "\"DigitalOut\" service) is driven by /host/0 as well"),
        checkFinds(
            "ThresholdRouteToARestartService",
            std::string(kButtonLampRestart)
                .insert(
                    1,
                    R"("host": [ { "route": { "from": 100, "to": 300, "map": "above", "threshold": 0.5 } } ], )"),
            "driver 0 restarts at every publication of event 100"),
        {"ServiceKeysOfOneNumber",
         {"check", "$CONFIG"},
         R"({ "services": {
              "1": { "eventId": 100, "type": "DigitalIn" },
              "01": { "eventId": 101, "type": "DigitalIn" } } })",
         2,
         ": /services/01: the keys \"1\" and \"01\" name the same service 1 in /services, on line "
         "2 "
         "and on line 3; give each number once",
         ""},
        {"MappingKeysOfOneNumber",
         {"run", "$CONFIG"},
         R"({ "mappings": { "100": { "size": 1 },
                            "0100": { "size": 4 } } })",
         2,
         ": /mappings/0100: the keys \"100\" and \"0100\" name the same event id 100 in /mappings, "
         "on line 1 and on line 2",
         ""},
        {"NumberBeyondADouble",
         {"check", "$CONFIG"},
         "{\n  \"scenario\": [ { \"at_ms\": 1e999 } ] }",
         2,
         "config.json: line 2, column 28: the number 1e999 is out of range; axlsim reads numbers "
         "from -1.7976931348623157e308 to 1.7976931348623157e308",
         ""},
        {"NestedDeeperThan256",
         {"check", "$CONFIG"},
         std::string(100000, '['),
         2,
         "config.json: the objects and lists are nested deeper than 256 levels at line 1, column "
         "257; axlsim reads at most 256",
         ""},
        checkFinds(
            "EventSizeBeyondItsBytes",
            std::string(kDigital).insert(
                1,
                R"("scenario": [ { "at_ms": 5, "event": { "id": 200, "value": 1, "size": 4294967295 } } ], )"),
            "event 200 has the size 4294967295 but carries 1 byte"),
        refused("UnknownCommand", {"bogus"},
                std::string("axlsim: bogus is not a command; the commands are ") + kCommands +
                    " (axlsim --help shows them)"),
        refused("UnknownCommandWithAnEscapeSequence", {"bo\x1b[2J\u202egus"},
                std::string("axlsim: bo\\x1b[2J\\u202egus is not a command; the commands are ") +
                    kCommands),
        refused("UnknownOptionWithoutACommand", {"--bogus"},
                std::string("axlsim: --bogus is not an option of axlsim; the commands are ") +
                    kCommands + " (axlsim --help shows them)"),
        refused("UnknownOptionOfACommand", {"run", kFeedbackLoop, "--bogus=1"},
                "axlsim: --bogus is not an option of axlsim run (axlsim run --help shows its "
                "options)"),
        refused("EmptyDriverOfRun", {"run", kFeedbackLoop, "--driver", ""},
                "--driver: expected the path of a driver library, not an empty text"),
        refused("EmptyDriverOfDemo", {"demo", "--driver", ""},
                "--driver: expected the path of a driver library, not an empty text"),
    };
    all.insert(all.end(), rest.begin(), rest.end());
#if AXLSIM_SERVE
    const std::vector<HostileCase> serve{
        refused("EmptyDriverOfServe", {"serve", kFeedbackLoop, "--driver", ""},
                "--driver: expected the path of a driver library, not an empty text"),
        refused("PortInHexadecimal", {"serve", kFeedbackLoop, "--port", "0x50"},
                "--port: 0x50 is not a port: expected decimal digits from 0 to 65535"),
        refused("PortBeyondTheHighest", {"serve", kFeedbackLoop, "--port", "65536"},
                "--port: 65536 is beyond the highest port: expected decimal digits from 0 to "
                "65535"),
        refused("PortWithAnEscapeSequence", {"serve", kFeedbackLoop, "--port", "80\x1b[2J"},
                "--port: 80\\x1b[2J is not a port: expected decimal digits from 0 to 65535"),
        refused("PortEmpty", {"serve", kFeedbackLoop, "--port", ""},
                "--port: an empty text is not a port: expected decimal digits from 0 to 65535"),
        refused("ModbusPortInHexadecimal", {"serve", kFeedbackLoop, "--modbus", "0x1f6"},
                "--modbus: expected [ADDR:]PORT with a port from 0 to 65535 in decimal digits"),
        refused("ModbusEmpty", {"serve", kFeedbackLoop, "--modbus", ""},
                "--modbus: expected [ADDR:]PORT with a port from 0 to 65535 in decimal digits (an "
                "IPv6 ADDR in brackets), not \"\""),
        refused("ListenEmpty", {"serve", kFeedbackLoop, "--listen", ""},
                "--listen: expected an address or a host name of this machine (an IPv6 address "
                "also in brackets), not \"\""),
        refused("ModbusAddressThatCannotBeBound",
                {"serve", kFeedbackLoop, "--port", "0", "--modbus", "192.0.2.1:0"},
                "axlsim: cannot listen on 192.0.2.1 port 0 for Modbus: Cannot assign requested "
                "address"),
    };
    all.insert(all.end(), serve.begin(), serve.end());
#endif
    return all;
}

class HostileCommandLine : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileCommandLine, IsRefusedOrHandledAsDocumented) {
    const HostileCase& hostile = GetParam();
    std::vector<std::string> arguments = hostile.arguments;
    for (std::string& argument : arguments) {
        if (argument == "$CONFIG") {
            argument = writeConfig("config.json", hostile.config);
        } else if (argument == "$OUTPUT") {
            argument = axlsimtest::temporaryPath("output");
        }
    }
    const auto run = runProgram(arguments, hostile.redirect);
    EXPECT_EQ(run.status, hostile.status) << run.err;
    if (!hostile.err.empty()) {
        EXPECT_THAT(run.err, HasSubstr(hostile.err));
    }
    if (!hostile.out.empty()) {
        EXPECT_THAT(run.out, HasSubstr(hostile.out));
    }
    // Short, readable messages: no 309 digits, no echo of a whole file.
    EXPECT_LT(run.err.size(), 400U) << run.err;
    if (hostile.status == 2 && hostile.redirect.out.empty() && !hostile.failsAfterTheRun) {
        EXPECT_THAT(run.out, Not(HasSubstr(" ms  ")));
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, HostileCommandLine, ::testing::ValuesIn(cases()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
