// SPDX-License-Identifier: MIT
#include "axlsim/run/Timeline.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <variant>
#include <vector>

namespace {

using namespace std::chrono_literals;

std::vector<std::string> notes(const std::vector<axlsim::Happening>& happenings) {
    std::vector<std::string> texts;
    for (const auto& happening : happenings) {
        texts.push_back(std::get<axlsim::Happening::Note>(happening.what).text);
    }
    return texts;
}

class TimelineAtATime : public ::testing::Test {
protected:
    std::chrono::nanoseconds now_{0};
    axlsim::Timeline timeline_{[this] { return now_; }};
};

TEST_F(TimelineAtATime, SettleKeepsWhatItSettledForOrdered) {
    timeline_.add(-1, axlsim::Happening::Note{"a"});
    now_ = 5ms;
    timeline_.add(-1, axlsim::Happening::Note{"b"});
    EXPECT_EQ(notes(timeline_.settle()), (std::vector<std::string>{"a"}));
    EXPECT_EQ(notes(timeline_.ordered()), (std::vector<std::string>{"a", "b"}));
}

TEST_F(TimelineAtATime, AfterForgetSettledOrderedShowsOnlyWhatIsNotSettledYet) {
    timeline_.add(-1, axlsim::Happening::Note{"a"});
    timeline_.forgetSettled();
    now_ = 5ms;
    timeline_.add(-1, axlsim::Happening::Note{"b"});
    EXPECT_EQ(notes(timeline_.settle()), (std::vector<std::string>{"a"}));
    EXPECT_EQ(notes(timeline_.ordered()), (std::vector<std::string>{"b"}));
    now_ = 6ms;
    EXPECT_EQ(notes(timeline_.settle()), (std::vector<std::string>{"b"}));
    EXPECT_TRUE(timeline_.ordered().empty());
}

TEST_F(TimelineAtATime, ForgetSettledDropsWhatWasKeptBefore) {
    timeline_.add(-1, axlsim::Happening::Note{"a"});
    now_ = 1ms;
    ASSERT_EQ(timeline_.settle().size(), 1U);
    timeline_.forgetSettled();
    EXPECT_TRUE(timeline_.ordered().empty());
}

}  // namespace
