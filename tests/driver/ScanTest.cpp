// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include "CombinedModule.h"
#include "ExposedDriverTest.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/FloatBytes.h"
#include "hosting/HostCalls.h"
#include "modules/IbIlConversion.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using namespace drivertest;
using namespace hosting;
using testsupport::ExposedDriver;
using namespace std::chrono_literals;

namespace {

using Duration = vplc::VirtualClock::Duration;

// A driver's scan on virtual time. With a single input the initial phase publishes at 0 and
// pauses 1 ms, so the endless scan runs at 1 ms, 101 ms, 201 ms and so on.
class Scan : public ExposedDriverTest {
protected:
    static Duration scanTime(int scan) { return 1ms + (scan - 1) * Duration(100ms); }

    // Serves channel 0 of the analog module as event 5, with the channel at `from` until the
    // second scan has run, then moves it to `to`.
    void moveAnalogInputAfterStart(unsigned short from, unsigned short to) {
        station_.setAnalogInput(2, 0, from);
        start(DriverConfig::analog(2).analogIn(5, "0"));
        clock_.runUntil(scanTime(2));

        station_.setAnalogInput(2, 0, to);
    }

    std::vector<uint32_t> publishedIds() const {
        std::vector<uint32_t> ids;
        for (const auto& publication : recorder_.published()) {
            ids.push_back(publication.id);
        }
        return ids;
    }

    std::vector<std::vector<uint8_t>> publishedPayloads() const {
        std::vector<std::vector<uint8_t>> payloads;
        for (const auto& publication : recorder_.published()) {
            payloads.push_back(publication.bytes);
        }
        return payloads;
    }

    std::vector<Duration> pauseDurations() const {
        std::vector<Duration> durations;
        for (const auto& pause : clock_.pauses()) {
            durations.push_back(pause.duration);
        }
        return durations;
    }

    std::vector<Duration> pauseStarts() const {
        std::vector<Duration> starts;
        for (const auto& pause : clock_.pauses()) {
            starts.push_back(pause.start);
        }
        return starts;
    }
};

}  // namespace

TEST_F(Scan, EveryDigitalInputIsPublishedOnceAtStartInAscendingPinOrder) {
    station_.setDigitalInputs(1, 0x0A);

    start(DriverConfig::digital().digitalIn(50, "5").digitalIn(10, "1").digitalIn(30, "3"));
    clock_.runUntil(50ms);

    EXPECT_EQ(publishedIds(), (std::vector<uint32_t>{10, 30, 50}));
    EXPECT_EQ(publishedPayloads(), (std::vector<std::vector<uint8_t>>{{1}, {1}, {0}}));
}

TEST_F(Scan, EachInitialPublicationIsFollowedByA1MsPause) {
    start(DriverConfig::digital().digitalIn(50, "5").digitalIn(10, "1").digitalIn(30, "3"));

    EXPECT_EQ(recorder_.published().size(), 1u);
    clock_.runUntil(1ms);
    EXPECT_EQ(recorder_.published().size(), 1u);
    clock_.runUntil(1ms + 1ns);
    EXPECT_EQ(recorder_.published().size(), 2u);
    clock_.runUntil(2ms + 1ns);
    EXPECT_EQ(recorder_.published().size(), 3u);
    clock_.runUntil(3ms + 1ns);
    EXPECT_EQ(recorder_.published().size(), 3u);

    EXPECT_EQ(pauseStarts(), (std::vector<Duration>{0ms, 1ms, 2ms, 3ms}));
    EXPECT_EQ(pauseDurations(), (std::vector<Duration>{1ms, 1ms, 1ms, 100ms}));
}

TEST_F(Scan, EveryAnalogInputIsPublishedOnceAtStartAsAFloat) {
    station_.setAnalogInput(2, 0, 30000);
    station_.setAnalogInput(2, 1, 3000);

    start(DriverConfig::analog(2).analogIn(21, "1").analogIn(20, "0"));
    clock_.runUntil(50ms);

    EXPECT_EQ(publishedIds(), (std::vector<uint32_t>{20, 21}));
    EXPECT_EQ(publishedPayloads(),
              (std::vector<std::vector<uint8_t>>{floatBytes(10.0f), floatBytes(1.0f)}));
    EXPECT_EQ(pauseDurations(), (std::vector<Duration>{1ms, 1ms, 100ms}));
}

TEST_F(Scan, DigitalInputsArePublishedBeforeAnalogInputs) {
    station_.setDigitalInputs(1, 0x04);
    station_.setAnalogInput(2, 0, 15000);

    start(DriverConfig("COMBINED")
              .analogIn(1, "1")
              .digitalIn(2, "4")
              .analogIn(3, "0")
              .digitalIn(4, "2"),
          combinedModule(1, 2).release());
    clock_.runUntil(50ms);

    EXPECT_EQ(publishedIds(), (std::vector<uint32_t>{4, 2, 3, 1}));
    EXPECT_EQ(publishedPayloads(),
              (std::vector<std::vector<uint8_t>>{{1}, {0}, floatBytes(5.0f), floatBytes(0.0f)}));
    EXPECT_EQ(pauseDurations(), (std::vector<Duration>{1ms, 1ms, 1ms, 1ms, 100ms}));
}

TEST_F(Scan, TheEndlessScanPausesFor100MsAfterEachPass) {
    start(DriverConfig::digital().digitalIn(1, "0"));

    clock_.runUntil(scanTime(5) + 1ns);

    EXPECT_EQ(pauseStarts(), (std::vector<Duration>{0ms, scanTime(1), scanTime(2), scanTime(3),
                                                    scanTime(4), scanTime(5)}));
    EXPECT_EQ(pauseDurations(), (std::vector<Duration>{1ms, 100ms, 100ms, 100ms, 100ms, 100ms}));
}

TEST_F(Scan, WithoutInputsTheScanStillCopiesTheInputsEvery100MsAndPublishesNothing) {
    start(DriverConfig::digital().digitalOut(1, "0", "0"));
    const int copiesAtStart = station_.calls("ArpPlcAxio_ReadFromAxioToGds");

    clock_.runUntil(1000ms);

    EXPECT_EQ(station_.calls("ArpPlcAxio_ReadFromAxioToGds"), copiesAtStart + 9);
    clock_.runUntil(1000ms + 1ns);
    EXPECT_EQ(station_.calls("ArpPlcAxio_ReadFromAxioToGds"), copiesAtStart + 10);
    EXPECT_TRUE(recorder_.published().empty());
    for (const Duration duration : pauseDurations()) {
        EXPECT_EQ(duration, 100ms);
    }
}

TEST_F(Scan, EachPassFirstCopiesTheInputsFromTheBus) {
    start(DriverConfig::digital().digitalIn(1, "0"));
    clock_.runUntil(scanTime(3));

    station_.setDigitalInput(1, 0, true);
    EXPECT_EQ(station_.inputsInGds(1), std::vector<uint8_t>{0x00});
    clock_.runUntil(scanTime(3) + 1ns);

    EXPECT_EQ(station_.inputsInGds(1), std::vector<uint8_t>{0x01});
    EXPECT_EQ(recorder_.published().size(), 2u);
}

TEST_F(Scan, ADigitalInputThatDoesNotChangeIsNeverPublishedAgain) {
    station_.setDigitalInputs(1, 0xFF);
    start(DriverConfig::digital().digitalIn(1, "6").digitalIn(2, "0"));

    clock_.runUntil(2000ms);

    EXPECT_EQ(recorder_.published().size(), 2u);
}

TEST_F(Scan, ADigitalInputThatTogglesBetweenTwoScansIsPublishedOnceWithTheNewByte) {
    start(DriverConfig::digital().digitalIn(7, "3"));
    clock_.runUntil(scanTime(2));

    station_.setDigitalInput(1, 3, true);
    clock_.runUntil(scanTime(4));

    EXPECT_EQ(publishedPayloads(), (std::vector<std::vector<uint8_t>>{{0}, {1}}));
    EXPECT_EQ(publishedIds(), (std::vector<uint32_t>{7, 7}));

    station_.setDigitalInput(1, 3, false);
    clock_.runUntil(scanTime(6));
    EXPECT_EQ(publishedPayloads(), (std::vector<std::vector<uint8_t>>{{0}, {1}, {0}}));
}

TEST_F(Scan, ADigitalInputSwitchedOnAndOffBetweenTwoScansIsNotPublished) {
    start(DriverConfig::digital().digitalIn(7, "3"));
    clock_.runUntil(scanTime(2) + 10ms);

    station_.setDigitalInput(1, 3, true);
    clock_.runUntil(scanTime(2) + 50ms);
    station_.setDigitalInput(1, 3, false);
    clock_.runUntil(scanTime(5));

    EXPECT_EQ(recorder_.published().size(), 1u);
}

TEST_F(Scan, OnlyTheInputThatChangedIsPublished) {
    start(DriverConfig::digital().digitalIn(1, "1").digitalIn(2, "2").digitalIn(3, "3"));
    clock_.runUntil(scanTime(2));

    station_.setDigitalInput(1, 2, true);
    clock_.runUntil(scanTime(3));

    EXPECT_EQ(publishedIds(), (std::vector<uint32_t>{1, 2, 3, 2}));
}

TEST_F(Scan, AnAnalogInputMovingFrom4_0To4_1IsNotPublished) {
    moveAnalogInputAfterStart(12000, 12300);
    clock_.runUntil(scanTime(6));

    EXPECT_EQ(publishedPayloads(), std::vector<std::vector<uint8_t>>{floatBytes(4.0f)});
}

TEST_F(Scan, AnAnalogInputMovingFrom4_0To4_125IsPublishedAndBecomesTheReference) {
    moveAnalogInputAfterStart(12000, 12375);
    clock_.runUntil(scanTime(4));
    ASSERT_EQ(publishedPayloads(),
              (std::vector<std::vector<uint8_t>>{floatBytes(4.0f), floatBytes(4.125f)}));
    EXPECT_EQ(publishedPayloads()[1], floatBytes(from_ib_il(12375)));

    // Against 4.125, a return to 4.0 is a change of 0.125.
    station_.setAnalogInput(2, 0, 12000);
    clock_.runUntil(scanTime(6));
    EXPECT_EQ(publishedPayloads(), (std::vector<std::vector<uint8_t>>{
                                       floatBytes(4.0f), floatBytes(4.125f), floatBytes(4.0f)}));
}

TEST_F(Scan, ARawStepFrom0To300IsPublishedBecauseTheDeadBandIsComparedInDoublePrecision) {
    // The step is exactly the float 0.1f, which is above the double 0.1 but not above 0.1f.
    ASSERT_EQ(from_ib_il(300), 0.1f);
    moveAnalogInputAfterStart(0, 300);
    clock_.runUntil(scanTime(3));

    EXPECT_EQ(publishedPayloads(),
              (std::vector<std::vector<uint8_t>>{floatBytes(0.0f), floatBytes(0.1f)}));
}

TEST_F(Scan, ARampOf0_04PerScanIsPublishedAtEveryThirdScanWithThatScansValue) {
    start(DriverConfig::analog(2).analogIn(5, "1"));

    for (int scan = 1; scan <= 9; ++scan) {
        clock_.runUntil(scanTime(scan));
        station_.setAnalogInput(2, 1, static_cast<uint16_t>(120 * scan));
    }
    clock_.runUntil(scanTime(10));

    EXPECT_EQ(publishedPayloads(), (std::vector<std::vector<uint8_t>>{
                                       floatBytes(0.0f), floatBytes(from_ib_il(360)),
                                       floatBytes(from_ib_il(720)), floatBytes(from_ib_il(1080))}));
}

TEST_F(Scan, AnAnalogPayloadLongerThanAFloatCarriesTheFloatAndZeros) {
    station_.setAnalogInput(2, 0, 30000);

    start(DriverConfig::analog(2).analogIn(5, "0", 8));
    clock_.runUntil(10ms);

    auto expected = floatBytes(10.0f);
    expected.resize(8, 0);
    ASSERT_EQ(recorder_.published().size(), 1u);
    EXPECT_EQ(recorder_.published()[0].size, 8u);
    EXPECT_EQ(recorder_.published()[0].bytes, expected);
}

TEST_F(Scan, AnAnalogPayloadShorterThanAFloatCarriesOnlyItsFirstBytes) {
    station_.setAnalogInput(2, 0, 30000);

    start(DriverConfig::analog(2).analogIn(5, "0", 2));
    clock_.runUntil(10ms);

    auto expected = floatBytes(10.0f);
    expected.resize(2);
    ASSERT_GE(recorder_.published().size(), 1u);
    EXPECT_EQ(recorder_.published()[0].size, 2u);
    EXPECT_EQ(recorder_.published()[0].bytes, expected);
}

TEST_F(Scan, ADigitalPayloadOfThreeBytesCarriesThePinStateAndZeros) {
    station_.setDigitalInputs(1, 0x01);

    start(DriverConfig::digital().digitalIn(5, "0", 3));
    clock_.runUntil(10ms);

    ASSERT_EQ(recorder_.published().size(), 1u);
    EXPECT_EQ(recorder_.published()[0].bytes, (std::vector<uint8_t>{1, 0, 0}));
}

TEST_F(Scan, ADigitalInputWithoutMappingIsPublishedWithAnEmptyPayloadAndStillTracked) {
    station_.setDigitalInputs(1, 0x01);
    auto config = DriverConfig::digital().digitalIn(5, "0");
    config.mappings.clear();

    start(config);
    clock_.runUntil(scanTime(3));

    ASSERT_EQ(recorder_.published().size(), 1u);
    EXPECT_EQ(recorder_.published()[0].size, 0u);
    EXPECT_TRUE(recorder_.published()[0].bytes.empty());

    station_.setDigitalInput(1, 0, false);
    clock_.runUntil(scanTime(4) + 1ns);
    EXPECT_EQ(recorder_.published().size(), 2u);
}

TEST_F(Scan, AFailedInputCopyLeavesTheGdsAsItWasAndTheScanGoesOn) {
    start(DriverConfig::digital().digitalIn(5, "0"));
    clock_.runUntil(scanTime(2));
    station_.setDigitalInput(1, 0, true);
    station_.inject("ArpPlcAxio_ReadFromAxioToGds", vplc::Fault::next("bus busy"));

    clock_.runUntil(scanTime(3));
    EXPECT_EQ(recorder_.published().size(), 1u);
    clock_.runUntil(scanTime(4));
    EXPECT_EQ(recorder_.published().size(), 2u);
    EXPECT_TRUE(recorder_.logs(driver_.get()).empty());
}

TEST_F(Scan, AFailedReadIsPublishedAsZero) {
    station_.setDigitalInputs(1, 0x01);
    start(DriverConfig::digital().digitalIn(5, "0"));
    clock_.runUntil(scanTime(2));
    station_.inject("ArpPlcGds_BeginRead", vplc::Fault::next("frame is busy"));

    clock_.runUntil(scanTime(3));

    EXPECT_EQ(publishedPayloads(), (std::vector<std::vector<uint8_t>>{{1}, {0}}));
    const auto logs = recorder_.logs(driver_.get());
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].text, "Can't begin read: frame is busy");
}
