// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "LogMessage.h"
#include "TestDriver.h"
#include "orbel/CallScope.h"
#include "orbel/FailureCounter.h"
#include "orbel/HostObserver.h"
#include "orbel/Recorder.h"

using hosttest::driverParams;
using hosttest::TestDriver;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

std::string addressText(const void* object) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", object);
    return text;
}

// An observer that calls back into the library from its callbacks.
class MeddlingObserver final : public orbel::HostObserver {
public:
    void published(const CSI_base*, uint32_t, uint32_t, std::span<const uint8_t>) override {
        logMessage(2, "logged from a callback %d", 7);
    }
    void stopped(const CSI_base*, const stServiceParams_t*, std::string_view) override {
        try {
            orbel::removeObserver(*this);
        } catch (const std::logic_error&) {
            refused = true;
        }
    }
    bool refused = false;
};

// What a failure counter has counted: failure lines, stops, exceptions, and their total.
std::array<int, 4> countsOf(const orbel::FailureCounter& failures) {
    return {failures.failureLines(), failures.stops(), failures.exceptions(), failures.total()};
}

using Counts = std::array<int, 4>;

}  // namespace

TEST(StandardErrorLines, ALogLineShowsLevelDriverAndText) {
    CaptureStderr();
    {
        orbel::CallScope creation(nullptr);
        TestDriver driver(driverParams("IO1"));
    }
    EXPECT_EQ(GetCapturedStderr(),
              "[host] log L4 IO1: CPLCNext: Drivername[Plc Next]-Version [1.3.2] - "
              "Service[IO1]\n");
}

TEST(StandardErrorLines, ALogLineOfNoDriverShowsLevelAndText) {
    CaptureStderr();
    logMessage(2, "Can't release buffer: %s", "gone");
    EXPECT_EQ(GetCapturedStderr(), "[host] log L2: Can't release buffer: gone\n");
}

TEST(StandardErrorLines, APublicationShowsEventSizeAndPayloadInHex) {
    TestDriver driver(driverParams("IO1"));
    uint8_t payload[2] = {0x01, 0xAB};

    CaptureStderr();
    driver.publishEvent(stEventParams_t{payload, 7, 2});
    driver.publishEvent(stEventParams_t{nullptr, 8, 4});

    EXPECT_EQ(GetCapturedStderr(),
              "[host] publish IO1: event 7 size 2 [01 AB]\n"
              "[host] publish IO1: event 8 size 4 []\n");
}

TEST(StandardErrorLines, AStopShowsTheServiceWhenThereIsOne) {
    TestDriver driver(driverParams("IO1"));
    stServiceParams_t service;
    service.nEventId = 12;
    service.sServiceType = "DigitalIn";

    CaptureStderr();
    driver.stopWithError(service, "Invalid digital input number.");
    driver.stopWithError("Received event with null data.");

    EXPECT_EQ(GetCapturedStderr(),
              "[host] stop IO1 service 12 DigitalIn: Invalid digital input number.\n"
              "[host] stop IO1: Received event with null data.\n");
}

TEST(StandardErrorLines, AThreadShowsItsStartAndHowItEnded) {
    TestDriver driver(driverParams("IO1"), [](TestDriver&) {});

    CaptureStderr();
    driver.initialize();
    driver.joinThread();

    EXPECT_EQ(GetCapturedStderr(),
              "[host] thread started IO1\n"
              "[host] thread ended IO1: run() returned\n");
}

TEST(StandardErrorLines, ADriverWithoutServiceNameIsShownByItsAddress) {
    TestDriver driver(driverParams(""));

    CaptureStderr();
    driver.stopWithError("stopped");

    EXPECT_EQ(GetCapturedStderr(), "[host] stop " + addressText(&driver) + ": stopped\n");
}

TEST(StandardErrorLines, ARegisteredObserverTakesThePlaceOfTheLines) {
    orbel::Recorder recorder;

    CaptureStderr();
    logMessage(2, "seen by the recorder only");

    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(recorder.logs().size(), 1u);
}

TEST(HostObservers, EveryRegisteredObserverSeesEveryReportUntilItIsRemoved) {
    orbel::Recorder first;
    logMessage(2, "one");
    {
        orbel::Recorder second;
        logMessage(2, "two");
        EXPECT_EQ(second.logs().size(), 1u);
    }
    logMessage(2, "three");

    EXPECT_EQ(first.logs().size(), 3u);
}

TEST(HostObservers, ALineLoggedFromInsideACallbackGoesToStandardError) {
    MeddlingObserver meddling;
    orbel::addObserver(meddling);
    TestDriver driver(driverParams("IO1"));
    uint8_t value = 1;

    CaptureStderr();
    driver.publishEvent(stEventParams_t{&value, 7, 1});
    const std::string lines = GetCapturedStderr();
    orbel::removeObserver(meddling);

    EXPECT_EQ(lines, "[host] log L2: logged from a callback 7\n");
}

TEST(HostObservers, RemovingAnObserverFromInsideACallbackIsRefused) {
    MeddlingObserver meddling;
    orbel::addObserver(meddling);
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"));

    driver.stopWithError("stopped");
    orbel::removeObserver(meddling);

    EXPECT_TRUE(meddling.refused);
    EXPECT_EQ(recorder.stops().size(), 1u);
}

TEST(HostObservers, AnObserverOverridingOneCallbackIsToldOnlyOfThatAndSilencesTheRest) {
    struct PublicationCount final : orbel::HostObserver {
        void published(const CSI_base*, uint32_t, uint32_t, std::span<const uint8_t>) override {
            ++count;
        }
        int count = 0;
    };
    PublicationCount publications;
    orbel::addObserver(publications);
    TestDriver driver(driverParams("IO1"));

    CaptureStderr();
    logMessage(2, "not a publication");
    uint8_t value = 1;
    driver.publishEvent(stEventParams_t{&value, 10, 1});
    driver.stopWithError("stopped");
    orbel::removeObserver(publications);

    EXPECT_EQ(GetCapturedStderr(), "");
    EXPECT_EQ(publications.count, 1);
}

TEST(FailureCounter, CountsFailureLinesButNotNoticesNorHostWarnings) {
    orbel::FailureCounter failures;

    logMessage(2, "Can't begin read: %s", "busy");
    logMessage(4, "a notice");
    logMessage(orbel::kHostWarningLevel, "a host warning");

    EXPECT_EQ(countsOf(failures), (Counts{1, 0, 0, 1}));
}

TEST(FailureCounter, CountsEveryStop) {
    orbel::FailureCounter failures;
    TestDriver driver(driverParams("IO1"));

    driver.stopWithError("stopped");
    driver.stopWithError("stopped again");

    EXPECT_EQ(countsOf(failures), (Counts{0, 2, 0, 2}));
}

TEST(FailureCounter, CountsAThreadEndedByAnExceptionButNotOneWhoseRunReturned) {
    orbel::FailureCounter failures;
    TestDriver returning(driverParams("IO1"), [](TestDriver&) {});
    TestDriver throwing(driverParams("IO2"),
                        [](TestDriver&) { throw std::runtime_error("scan failed"); });

    returning.initialize();
    returning.joinThread();
    throwing.initialize();
    throwing.joinThread();

    EXPECT_EQ(countsOf(failures), (Counts{0, 0, 1, 1}));
}

TEST(Recorder, ClearForgetsEverythingRecorded) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"));
    driver.stopWithError("stopped");

    recorder.clear();

    EXPECT_TRUE(recorder.logs().empty());
    EXPECT_TRUE(recorder.stops().empty());
}

TEST(Recorder, WaitUntilGivesFalseWhenTheConditionNeverHolds) {
    orbel::Recorder recorder;
    EXPECT_FALSE(recorder.waitUntil([] { return false; }, std::chrono::milliseconds(20)));
}

TEST(Recorder, WaitUntilSeesWhatADriverThreadReports) {
    orbel::Recorder recorder;
    uint8_t value = 5;
    TestDriver driver(driverParams("IO1"), [&value](TestDriver& self) {
        self.publishEvent({&value, 3, 1});
    });

    driver.initialize();
    const bool published =
        recorder.waitUntil([&] { return recorder.published(&driver).size() == 1; });
    driver.joinThread();

    EXPECT_TRUE(published);
}
