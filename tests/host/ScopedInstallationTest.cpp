// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "LogMessage.h"
#include "StepClock.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"
#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using testsupport::StepClock;

namespace {

class LineCollector final : public orbel::HostObserver {
public:
    void logged(const CSI_base*, int, std::string_view, std::string_view text) override {
        lines.emplace_back(text);
    }
    std::vector<std::string> lines;
};

}  // namespace

TEST(ObserverRegistration, TheObserverSeesWhatIsReportedWhileTheRegistrationLivesAndNothingAfter) {
    LineCollector collector;
    {
        orbel::ObserverRegistration registration(collector);
        logMessage(2, "while registered %d", 1);
    }
    CaptureStderr();
    logMessage(2, "after %d", 2);
    GetCapturedStderr();
    EXPECT_EQ(collector.lines, std::vector<std::string>{"while registered 1"});
}

TEST(PauseClockInstallation, TheClockIsInstalledWhileItLivesAndRealTimeComesBackAfter) {
    {
        StepClock clock;
        EXPECT_EQ(orbel::pauseClock(), &clock);
    }
    EXPECT_EQ(orbel::pauseClock(), nullptr);
}

TEST(PauseClockInstallation, ASecondClockIsRefusedAndTheFirstStaysInstalled) {
    StepClock first;
    std::optional<StepClock> second;
    EXPECT_THROW(second.emplace(), std::logic_error);
    EXPECT_EQ(orbel::pauseClock(), &first);
}
