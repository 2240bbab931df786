// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "axlsim/configuration/DriverNumber.h"

namespace {

using axlsim::DriverNumber;

TEST(DriverNumber, APlainNumberIsReadAsWritten) {
    const DriverNumber number = DriverNumber::read("3");
    EXPECT_FALSE(number.throws());
    EXPECT_EQ(number.value(), 3);
    EXPECT_TRUE(number.readsAsWritten());
}

TEST(DriverNumber, LeadingBlanksASignAndTrailingBlanksAreReadAsWritten) {
    const DriverNumber number = DriverNumber::read("  -7 ");
    EXPECT_EQ(number.value(), -7);
    EXPECT_TRUE(number.readsAsWritten());
}

TEST(DriverNumber, OnePointFiveIsReadAsOneAndNotAsWritten) {
    const DriverNumber number = DriverNumber::read("1.5");
    EXPECT_EQ(number.value(), 1);
    EXPECT_FALSE(number.readsAsWritten());
}

TEST(DriverNumber, HexadecimalZeroX10IsReadAsZero) {
    const DriverNumber number = DriverNumber::read("0x10");
    EXPECT_EQ(number.value(), 0);
    EXPECT_FALSE(number.readsAsWritten());
}

TEST(DriverNumber, TextAfterTheDigitsIsIgnoredByTheDriver) {
    const DriverNumber number = DriverNumber::read(" 12abc");
    EXPECT_EQ(number.value(), 12);
    EXPECT_FALSE(number.readsAsWritten());
}

TEST(DriverNumber, AnEmptyTextThrowsInvalidArgumentWithTheTextStoi) {
    const DriverNumber number = DriverNumber::read("");
    ASSERT_TRUE(number.throws());
    EXPECT_EQ(number.exception()->type, "std::invalid_argument");
    EXPECT_EQ(number.exception()->what, "stoi");
}

TEST(DriverNumber, ATextStartingWithALetterThrowsInvalidArgument) {
    const DriverNumber number = DriverNumber::read("abc");
    ASSERT_TRUE(number.throws());
    EXPECT_EQ(number.exception()->type, "std::invalid_argument");
}

TEST(DriverNumber, ANumberBeyondTheIntRangeThrowsOutOfRangeWithTheTextStoi) {
    const DriverNumber number = DriverNumber::read("4294967296");
    ASSERT_TRUE(number.throws());
    EXPECT_EQ(number.exception()->type, "std::out_of_range");
    EXPECT_EQ(number.exception()->what, "stoi");
}

TEST(DriverNumber, TheLowestIntIsStillAnInt) {
    const DriverNumber number = DriverNumber::read("-2147483648");
    EXPECT_FALSE(number.throws());
    EXPECT_EQ(number.value(), -2147483647 - 1);
}

}  // namespace
