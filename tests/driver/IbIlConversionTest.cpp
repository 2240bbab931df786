// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "modules/IbIlConversion.h"

namespace {

uint32_t bitsOf(float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float floatWithBits(uint32_t bits) {
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// The scale step: the float nearest to 1/3000.
const float kStep = floatWithBits(0x39AEC33Eu);

// A word from the bus and the value it stands for.
struct WordAndValue {
    const char* name;
    unsigned short word;
    float value;
    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const WordAndValue& row) {
        return out << row.name;
    }
};

class IbIlWordRead : public testing::TestWithParam<WordAndValue> {};

class IbIlValueSent : public testing::TestWithParam<WordAndValue> {};

std::string nameOf(const testing::TestParamInfo<WordAndValue>& info) {
    return info.param.name;
}

}  // namespace

TEST_P(IbIlWordRead, StandsForItsValueToTheBit) {
    EXPECT_EQ(bitsOf(from_ib_il(GetParam().word)), bitsOf(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(IbIlConversion, IbIlWordRead,
                         testing::Values(WordAndValue{"WordZeroIsZero", 0, 0.0f},
                                         WordAndValue{"Word3000IsOne", 3000, 1.0f},
                                         WordAndValue{"Word15000IsFive", 15000, 5.0f},
                                         WordAndValue{"Word30000IsTen", 30000, 10.0f},
                                         WordAndValue{"Word65535Is21_844999", 65535, 21.844999f},
                                         WordAndValue{"WordsFrom0x8000UpAreLargePositiveValues",
                                                      32768, 10.922667f}),
                         nameOf);

TEST_P(IbIlValueSent, AsItsWord) {
    EXPECT_EQ(to_ib_il(GetParam().value), GetParam().word);
}

INSTANTIATE_TEST_SUITE_P(
    IbIlConversion, IbIlValueSent,
    testing::Values(WordAndValue{"OneIsSentAs3000", 3000, 1.0f},
                    WordAndValue{"TenIsSentAs30000", 30000, 10.0f},
                    WordAndValue{"AValueBetweenStepsIsTruncatedNotRounded", 9999, 3.3333f},
                    WordAndValue{"OnePoint23456IsSentAs3703", 3703, 1.23456f},
                    WordAndValue{"AValueBelowOneStepIsSentAsZero", 0, 0.0001f},
                    WordAndValue{"TwentyOnePoint845IsSentAs65535", 65535, 21.845f},
                    WordAndValue{"TwentyOnePoint846WrapsAroundTo2", 2, 21.846f},
                    WordAndValue{"TwentyTwoIsSentAs464BecauseTheCountWraps", 464, 22.0f},
                    WordAndValue{"OneHundredIsSentAs37856BecauseTheCountWraps", 37856, 100.0f}),
    nameOf);

TEST(IbIlConversion, WordOneIsExactlyTheScaleStep) {
    EXPECT_EQ(bitsOf(from_ib_il(1)), 0x39AEC33Eu);
    EXPECT_EQ(bitsOf(from_ib_il(1)), bitsOf(kStep));
}

TEST(IbIlConversion, EveryWordIsTheSinglePrecisionProductOfWordAndStep) {
    for (uint32_t word = 0; word <= 0xFFFFu; ++word) {
        const float expected = static_cast<float>(word) * kStep;
        ASSERT_EQ(bitsOf(from_ib_il(static_cast<unsigned short>(word))), bitsOf(expected))
            << "word " << word;
    }
}

TEST(IbIlConversion, ANegativeValueIsSentAsZero) {
    EXPECT_EQ(to_ib_il(-1.0f), 0);
    EXPECT_EQ(to_ib_il(-0.0001f), 0);
    EXPECT_EQ(to_ib_il(-std::numeric_limits<float>::infinity()), 0);
}

TEST(IbIlConversion, NotANumberIsSentAsZero) {
    EXPECT_EQ(to_ib_il(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(to_ib_il(-std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(IbIlConversion, ACountOf2To32OrMoreSaturatesBeforeKeepingTheLow16Bits) {
    EXPECT_EQ(to_ib_il(1e10f), 65535);
    EXPECT_EQ(to_ib_il(std::numeric_limits<float>::infinity()), 65535);
    EXPECT_EQ(to_ib_il(std::numeric_limits<float>::max()), 65535);
}

TEST(IbIlConversion, ACountAbove2To31IsTakenAsUnsignedBeforeKeepingTheLow16Bits) {
    // 1000000 / step is 3000000000, beyond the int range: 3000000000 mod 65536 is 24064.
    EXPECT_EQ(to_ib_il(1000000.0f), 24064);
}

TEST(IbIlConversion, TheLastCountBelow2To32WrapsAndTheFirstAboveItSaturates) {
    // 1431655 / step is 4294964992 (0xFFFFF700); 1431656 / step is 4294967808, above 2^32 - 1.
    EXPECT_EQ(to_ib_il(1431655.0f), 0xF700);
    EXPECT_EQ(to_ib_il(1431656.0f), 65535);
}

TEST(IbIlConversion, ACountOfExactly2To32SaturatesTo65535) {
    // 1431655.75 divided by the step is 2^32 itself, the first count that saturates.
    ASSERT_EQ(1431655.75f / (1.0f / 3000.0f), 4294967296.0f);
    EXPECT_EQ(to_ib_il(1431655.75f), 65535);
}

TEST(IbIlConversion, ValuesAreDividedByTheStepNotMultipliedBy3000) {
    // For the word 7 the two differ: from_ib_il(7) * 3000 truncates to 6, while dividing it by the
    // step gives back 7.
    const float value = from_ib_il(7);
    ASSERT_EQ(static_cast<uint32_t>(value * 3000.0f), 6u);
    EXPECT_EQ(to_ib_il(value), 7);
}

TEST(IbIlConversion, Word3ComesBackAs2BecauseItsQuotientIsJustBelow3) {
    EXPECT_EQ(bitsOf(from_ib_il(3)), bitsOf(0.00099999993f));
    EXPECT_EQ(to_ib_il(from_ib_il(3)), 2);
}

TEST(IbIlConversion, TheRoundTripGivesBack5587WordsOneLowerAndNoneFurtherOff) {
    int oneLower = 0;
    int furtherOff = 0;
    for (uint32_t word = 0; word <= 0xFFFFu; ++word) {
        const unsigned back = to_ib_il(from_ib_il(static_cast<unsigned short>(word)));
        if (back + 1 == word) {
            ++oneLower;
        } else if (back != word) {
            ++furtherOff;
        }
    }
    EXPECT_EQ(oneLower, 5587);
    EXPECT_EQ(furtherOff, 0);
}

TEST(IbIlConversion, TheFirstWordsThatComeBackOneLowerAre3_6_12And13) {
    std::vector<unsigned> firstLower;
    for (uint32_t word = 0; word <= 0xFFFFu && firstLower.size() < 4; ++word) {
        if (to_ib_il(from_ib_il(static_cast<unsigned short>(word))) != word) {
            firstLower.push_back(word);
        }
    }
    EXPECT_EQ(firstLower, (std::vector<unsigned>{3, 6, 12, 13}));
}

TEST(IbIlConversion, TheRoundTripKeeps3000_15000And30000) {
    EXPECT_EQ(to_ib_il(from_ib_il(3000)), 3000);
    EXPECT_EQ(to_ib_il(from_ib_il(15000)), 15000);
    EXPECT_EQ(to_ib_il(from_ib_il(30000)), 30000);
}
