// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "axlsim/configuration/DriverNumber.h"

namespace {

using axlsim::DriverNumber;

// What reading a text gives, in words: "3 as written", "1 not as written", or
// "throws std::invalid_argument: stoi".
std::string outcomeOf(const DriverNumber& number) {
    if (number.throws()) {
        return "throws " + number.exception()->type + ": " + number.exception()->what;
    }
    return std::to_string(number.value()) +
           (number.readsAsWritten() ? " as written" : " not as written");
}

// A text the driver reads as a number, and the outcome.
struct ReadNumber {
    const char* name;
    const char* text;
    const char* outcome;

    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const ReadNumber& row) {
        return out << row.name;
    }
};

class DriverNumberRead : public testing::TestWithParam<ReadNumber> {};

TEST_P(DriverNumberRead, GivesWhatTheDriverGets) {
    EXPECT_EQ(outcomeOf(DriverNumber::read(GetParam().text)), GetParam().outcome);
}

INSTANTIATE_TEST_SUITE_P(
    DriverNumber, DriverNumberRead,
    testing::Values(
        ReadNumber{"APlainNumberIsReadAsWritten", "3", "3 as written"},
        ReadNumber{"LeadingBlanksASignAndTrailingBlanksAreReadAsWritten", "  -7 ", "-7 as written"},
        ReadNumber{"OnePointFiveIsReadAsOneAndNotAsWritten", "1.5", "1 not as written"},
        ReadNumber{"HexadecimalZeroX10IsReadAsZero", "0x10", "0 not as written"},
        ReadNumber{"TextAfterTheDigitsIsIgnoredByTheDriver", " 12abc", "12 not as written"},
        ReadNumber{"AnEmptyTextThrowsInvalidArgumentWithTheTextStoi", "",
                   "throws std::invalid_argument: stoi"},
        ReadNumber{"ATextStartingWithALetterThrowsInvalidArgument", "abc",
                   "throws std::invalid_argument: stoi"},
        ReadNumber{"ANumberBeyondTheIntRangeThrowsOutOfRangeWithTheTextStoi", "4294967296",
                   "throws std::out_of_range: stoi"}),
    [](const testing::TestParamInfo<ReadNumber>& info) { return std::string(info.param.name); });

TEST(DriverNumber, TheLowestIntIsStillAnInt) {
    const DriverNumber number = DriverNumber::read("-2147483648");
    EXPECT_FALSE(number.throws());
    EXPECT_EQ(number.value(), -2147483647 - 1);
}

}  // namespace
