// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <tuple>

#include "LogMessage.h"
#include "orbel/LogFormat.h"
#include "orbel/Recorder.h"

namespace {

// The recorder holds one line, with this level, format and text.
void expectOnlyLine(const orbel::Recorder& recorder, int level, const std::string& format,
                    const std::string& text) {
    const auto logs = recorder.logs();
    ASSERT_EQ(logs.size(), 1u);
    const orbel::LogLine& line = logs[0];
    EXPECT_EQ(std::tie(line.level, line.format, line.text), std::tie(level, format, text));
}

// A refusal of a pin, whose format writes the pin's place as "&d", and the line it renders.
struct PinRefusal {
    const char* name;
    const char* format;
    int pin;
    const char* range;
    const char* text;
    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const PinRefusal& row) {
        return out << row.name;
    }
};

class LogMessagePinRefusal : public testing::TestWithParam<PinRefusal> {};

}  // namespace

TEST(LogMessage, ALineKeepsItsLevelItsFormatAndItsRenderedText) {
    orbel::Recorder recorder;

    logMessage(2, "Can't begin read: %s", "buffer locked");

    expectOnlyLine(recorder, 2, "Can't begin read: %s", "Can't begin read: buffer locked");
}

TEST(LogMessage, TheVersionLineShowsNameVersionAndService) {
    orbel::Recorder recorder;
    const char* format = "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]";

    logMessage(4, format, "Plc Next", 1, 3, 2, "IO1");

    expectOnlyLine(recorder, 4, format,
                   "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO1]");
}

TEST_P(LogMessagePinRefusal, ShowsThePinAndThenTheRange) {
    orbel::Recorder recorder;

    logMessage(2, GetParam().format, GetParam().pin, GetParam().range);

    expectOnlyLine(recorder, 2, GetParam().format, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    LogMessage, LogMessagePinRefusal,
    testing::Values(
        PinRefusal{"TheDigitalInputFormatWithAmpersandDShowsThePinAndThenTheRange",
                   "Digital input pin with number &d is not available. Valid numbers are %s.", 8,
                   "0 - 7",
                   "Digital input pin with number 8 is not available. Valid numbers are 0 - 7."},
        PinRefusal{"TheAnalogInputFormatWithAmpersandDShowsThePinAndThenTheRange",
                   "Analog input pin with number &d is not available. Valid numbers are %s", 2,
                   "0 - 1",
                   "Analog input pin with number 2 is not available. Valid numbers are 0 - 1"},
        PinRefusal{"TheDigitalOutputFormatWithAmpersandDShowsThePinAndThenTheRange",
                   "Digital output pin with number &d is not available. Valid numbers are %s.", 12,
                   "0 - 7",
                   "Digital output pin with number 12 is not available. Valid numbers are 0 - 7."},
        PinRefusal{"TheAnalogOutputFormatWithAmpersandDShowsThePinAndThenTheRange",
                   "Analog output pin with number &d is not available. Valid numbers are %s.", -1,
                   "0 - 1",
                   "Analog output pin with number -1 is not available. Valid numbers are 0 - 1."}),
    [](const testing::TestParamInfo<PinRefusal>& info) { return std::string(info.param.name); });

TEST(LogMessage, ANullFormatGivesAnEmptyLine) {
    orbel::Recorder recorder;

    logMessage(2, nullptr);

    expectOnlyLine(recorder, 2, "", "");
}

TEST(LogFormat, PercentIShowsASignedDecimal) {
    EXPECT_EQ(orbel::logLineOf("[%i]", -42), "[-42]");
}

TEST(LogFormat, ANullTextShowsAsNullAlsoWithAWidth) {
    EXPECT_EQ(orbel::logLineOf("[%s] [%8s]", static_cast<const char*>(nullptr),
                               static_cast<const char*>(nullptr)),
              "[(null)] [  (null)]");
}

TEST(LogFormat, WidthsFlagsAndSignsApplyAsInPrintf) {
    EXPECT_EQ(orbel::logLineOf("%5d|%-5d|%05d|%+d|% d", 42, 42, 42, 42, 42),
              "   42|42   |00042|+42| 42");
}

TEST(LogFormat, StarWidthAndPrecisionTakeTheirIntsBeforeTheValue) {
    EXPECT_EQ(orbel::logLineOf("%*d|%-*d|%.*s|%*.*f", 4, 7, 3, 7, 2, "abcdef", 7, 2, 3.14159),
              "   7|7  |ab|   3.14");
}

TEST(LogFormat, LengthModifiersTakeArgumentsOfTheirOwnSize) {
    EXPECT_EQ(orbel::logLineOf("%hhd %hd %ld %lld %zu %jd %td|%s", 300, 70000, -5L,
                               9007199254740993LL, static_cast<std::size_t>(12345),
                               static_cast<std::intmax_t>(-9007199254740993),
                               static_cast<std::ptrdiff_t>(-3), "end"),
              "44 4464 -5 9007199254740993 12345 -9007199254740993 -3|end");
}

TEST(LogFormat, UnsignedConversionsShowDecimalOctalAndHex) {
    EXPECT_EQ(orbel::logLineOf("%u %o %x %X %#x %llx|%s", 4294967295u, 8u, 255u, 255u, 255u,
                               0x1122334455667788ULL, "end"),
              "4294967295 10 ff FF 0xff 1122334455667788|end");
}

TEST(LogFormat, FloatingConversionsShowDoublesAndLongDoubles) {
    EXPECT_EQ(orbel::logLineOf("%.2f %e %g %G %a %F %Lf|%s", 3.14159, 1234.5, 0.0001, 1e-10, 1.0,
                               static_cast<double>(INFINITY), 2.5L, "end"),
              "3.14 1.234500e+03 0.0001 1E-10 0x1p+0 INF 2.500000|end");
}

TEST(LogFormat, CharactersPointersAndPercentSigns) {
    EXPECT_EQ(orbel::logLineOf("%c%c %% %p", 'o', 'k', reinterpret_cast<void*>(0x1234)),
              "ok % 0x1234");
}

TEST(LogFormat, WideCharactersAndTextsAreShown) {
    EXPECT_EQ(orbel::logLineOf("%lc %ls", static_cast<wint_t>(L'x'), L"wide"), "x wide");
}

TEST(LogFormat, PercentNTakesItsPointerButWritesAndShowsNothing) {
    int count = 7;
    EXPECT_EQ(orbel::logLineOf("ab%ncd%d", &count, 5), "abcd5");
    EXPECT_EQ(count, 7);
}

TEST(LogFormat, AnUnknownConversionIsShownAsWrittenAndTakesNoArgument) {
    EXPECT_EQ(orbel::logLineOf("%y %d", 3), "%y 3");
}

TEST(LogFormat, APercentSignAtTheEndIsShownAsWritten) {
    EXPECT_EQ(orbel::logLineOf("100%"), "100%");
}

TEST(LogFormat, AnAmpersandThatIsNotFollowedByDIsPlainText) {
    EXPECT_EQ(orbel::logLineOf("a & b &x %d", 1), "a & b &x 1");
}

TEST(LogFormat, LongTextsAndWideFieldsAreShownWhole) {
    const std::string longText(1000, 'q');
    EXPECT_EQ(orbel::logLineOf("%s", longText.c_str()), longText);
    EXPECT_EQ(orbel::logLineOf("%300d", 1), std::string(299, ' ') + "1");
}
