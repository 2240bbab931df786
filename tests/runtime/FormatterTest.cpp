// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "Arp/System/Commons/Text/Formatter.hpp"

namespace {

using Arp::System::Commons::ArgumentException;
using Arp::System::Commons::InvalidOperationException;
using Arp::System::Commons::Text::Formatter;

TEST(Formatter, PlaceholdersAreReplacedByTheArgumentOfTheirIndex) {
    EXPECT_EQ(Formatter::Format("{1} before {0}", "b", "a"), "a before b");
}

TEST(Formatter, APlaceholderUsedTwiceIsReplacedTwice) {
    EXPECT_EQ(Formatter::Format("'{0}' is '{0}'", "x"), "'x' is 'x'");
}

TEST(Formatter, APlaceholderWithoutAnArgumentStaysAsWritten) {
    EXPECT_EQ(Formatter::Format("{0} and {1}", "x"), "x and {1}");
}

TEST(Formatter, BracesAroundAnythingButAnIndexStayAsWritten) {
    EXPECT_EQ(Formatter::Format("{a} {} {-0} {0", "x"), "{a} {} {-0} {0");
}

TEST(Formatter, AnIndexTooLargeForANumberStaysAsWritten) {
    EXPECT_EQ(Formatter::Format("{99999999999999999999999}", "x"), "{99999999999999999999999}");
}

TEST(Formatter, NumbersAreWrittenInDecimal) {
    EXPECT_EQ(Formatter::Format("{0} of {1}", 3, -7), "3 of -7");
}

TEST(Formatter, StringsAndNullTextsAreArgumentsToo) {
    const char* none = nullptr;
    EXPECT_EQ(Formatter::Format("[{0}|{1}]", std::string("s"), none), "[s|]");
}

TEST(Formatter, AnExceptionCarriesItsFormattedMessageAlsoAsWhat) {
    InvalidOperationException e("Could not retrieve service '{0}' from service provider '{1}'.",
                                "S", "P");

    EXPECT_EQ(e.GetMessage(), "Could not retrieve service 'S' from service provider 'P'.");
    EXPECT_STREQ(e.what(), "Could not retrieve service 'S' from service provider 'P'.");
}

TEST(Formatter, AnArgumentExceptionKeepsArgumentNameAndValueBesideItsMessage) {
    ArgumentException e("count", "-1", "{0} must not be negative", "count");

    EXPECT_EQ(e.GetMessage(), "count must not be negative");
    EXPECT_EQ(e.GetArgumentName(), "count");
    EXPECT_EQ(e.GetArgumentValue(), "-1");
}

}  // namespace
