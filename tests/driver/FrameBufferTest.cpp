// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "gds/IOFrameBuffer.h"
#include "hosting/LoggedLine.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

using hosting::LoggedLine;
using hosting::loggedLines;

TEST(FrameBuffer, Module1Port_DI8_IsTheVariableArpIoAxlC_0_DI8) {
    EXPECT_EQ(gds::IOFrameBuffer::variableName(1, "DI8"), "Arp.Io.AxlC/0.~DI8");
}

TEST(FrameBuffer, Module3Port_AQ32_IsTheVariableArpIoAxlC_2_AQ32) {
    EXPECT_EQ(gds::IOFrameBuffer::variableName(3, "AQ32"), "Arp.Io.AxlC/2.~AQ32");
}

TEST(FrameBuffer, Module0IsNotRangeCheckedAndGivesPositionMinus1) {
    EXPECT_EQ(gds::IOFrameBuffer::variableName(0, "DI8"), "Arp.Io.AxlC/-1.~DI8");
}

TEST(FrameBuffer, TheExtremeModuleNumbersGiveTheirPositionWithoutOverflow) {
    EXPECT_EQ(gds::IOFrameBuffer::variableName(INT_MIN, "DI8"), "Arp.Io.AxlC/-2147483649.~DI8");
    EXPECT_EQ(gds::IOFrameBuffer::variableName(INT_MAX, "DO8"), "Arp.Io.AxlC/2147483646.~DO8");
}

TEST(FrameBuffer, AcquiresTheNamedBufferAndReleasesItWhenDestroyed) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    orbel::Recorder recorder;
    {
        gds::IOFrameBuffer buffer("1:IN");
        EXPECT_EQ(station.buffersHeld(), 1);
        EXPECT_EQ(station.calls("ArpPlcIo_GetBufferPtrByBufferID"), 1);
    }
    EXPECT_EQ(station.buffersHeld(), 0);
    EXPECT_EQ(station.calls("ArpPlcIo_ReleaseGdsBuffer"), 1);
    EXPECT_TRUE(recorder.logs().empty());
}

TEST(FrameBuffer, AFailedAcquisitionIsLoggedAndReleaseIsStillAttempted) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    orbel::Recorder recorder;
    {
        gds::IOFrameBuffer buffer("1:SIDEWAYS");
        EXPECT_EQ(loggedLines(recorder),
                  (std::vector<LoggedLine>{
                      {2, "Failed to get pointer to gds buffer: %s",
                       "Failed to get pointer to gds buffer: Buffer '1:SIDEWAYS' does not exist "
                       "in I/O system 'Arp.Io.AxlC'"}}));
        recorder.clear();
    }
    EXPECT_EQ(station.calls("ArpPlcIo_ReleaseGdsBuffer"), 1);
    EXPECT_EQ(
        loggedLines(recorder),
        (std::vector<LoggedLine>{{2, "Can't release buffer: %s",
                                  "Can't release buffer: ArpPlcIo_ReleaseGdsBuffer: pBuffer is "
                                  "null"}}));
}

TEST(FrameBuffer, AFailedReleaseIsLogged) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    orbel::Recorder recorder;
    {
        gds::IOFrameBuffer buffer("1:OUT");
        station.inject("ArpPlcIo_ReleaseGdsBuffer", vplc::Fault::next("still in use"));
    }
    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't release buffer: %s", "Can't release buffer: still in use"}}));
}

TEST(FrameBuffer, TheOffsetOfAKnownVariableIsThePlatformsOffset) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    gds::IOFrameBuffer buffer("1:IN");

    EXPECT_EQ(buffer.offset("Arp.Io.AxlC/1.~AI32"),
              static_cast<int>(station.variableOffset("Arp.Io.AxlC/1.~AI32").value()));
    EXPECT_EQ(buffer.offset(1, "DI8"),
              static_cast<int>(station.variableOffset("Arp.Io.AxlC/0.~DI8").value()));
}

TEST(FrameBuffer, AnUnknownVariableIsLoggedAndHasTheInvalidOffset) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    gds::IOFrameBuffer buffer("1:IN");
    orbel::Recorder recorder;

    EXPECT_EQ(buffer.offset(0, "DI8"), gds::IOFrameBuffer::InvalidOffset);
    EXPECT_EQ(gds::IOFrameBuffer::InvalidOffset, -1);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't get offset to port: %s",
                   "Can't get offset to port: Variable 'Arp.Io.AxlC/-1.~DI8' does not exist in "
                   "buffer '1:IN'"}}));
}

TEST(FrameBuffer, TheInvalidOffsetIsNeitherLockedNorReadNorWritten) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    gds::IOFrameBuffer buffer("1:OUT");
    const auto before = station.frameBytes(vplc::Frame::Out);
    uint8_t target[2] = {0xAA, 0xBB};
    const uint8_t source[2] = {0x11, 0x22};

    buffer.read(gds::IOFrameBuffer::InvalidOffset, target, sizeof target);
    buffer.write(gds::IOFrameBuffer::InvalidOffset, source, sizeof source);

    EXPECT_EQ(target[0], 0);
    EXPECT_EQ(target[1], 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
    EXPECT_EQ(station.frameBytes(vplc::Frame::Out), before);
}

TEST(FrameBuffer, AFailedBeginReadStillCallsEndReadAndGivesZeros) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, 2, {0x12, 0x34});
    gds::IOFrameBuffer buffer("1:IN");
    station.inject("ArpPlcGds_BeginRead", vplc::Fault::next("no data"));
    uint8_t target[2] = {0xAA, 0xBB};

    buffer.read(2, target, sizeof target);

    EXPECT_EQ(target[0], 0);
    EXPECT_EQ(target[1], 0);
    EXPECT_EQ(station.calls("ArpPlcGds_EndRead"), 1);
}

TEST(FrameBuffer, AFailedBeginWriteStillCallsEndWriteAndWritesNothing) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    gds::IOFrameBuffer buffer("1:OUT");
    const auto before = station.frameBytes(vplc::Frame::Out);
    station.inject("ArpPlcGds_BeginWrite", vplc::Fault::next("frame is busy"));
    const uint8_t source[2] = {0x11, 0x22};

    buffer.write(2, source, sizeof source);

    EXPECT_EQ(station.calls("ArpPlcGds_EndWrite"), 1);
    EXPECT_EQ(station.frameBytes(vplc::Frame::Out), before);
}

TEST(FrameBuffer, AnEmptyErrorTextGivesAMessageEndingInColonAndBlank) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    gds::IOFrameBuffer buffer("1:IN");
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_BeginRead", vplc::Fault::next(""));
    uint8_t target = 0;

    buffer.read(2, &target, 1);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{{2, "Can't begin read: %s", "Can't begin read: "}}));
}

TEST(FrameBuffer, AnErrorTextLongerThan1023CharactersIsCutTo1023) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    gds::IOFrameBuffer buffer("1:IN");
    const std::string longText(1500, 'x');
    station.inject("ArpPlcGds_GetVariableOffset", vplc::Fault::next(longText));
    orbel::Recorder recorder;
    buffer.offset("Arp.Io.AxlC/0.~DI8");

    const auto lines = recorder.logs();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].text, "Can't get offset to port: " + std::string(1023, 'x'));
}

TEST(FrameBuffer, TheLastErrorIsEmptyWhenThePlatformReportsNone) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});

    EXPECT_EQ(axioline::getLastError(), "");
}

TEST(FrameBuffer, TheLastErrorIsThePlatformsText) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    station.inject("ArpPlcGds_GetVariableOffset", vplc::Fault::next("lookup failed"));
    gds::IOFrameBuffer buffer("1:IN");
    size_t offset = 0;
    ASSERT_FALSE(ArpPlcGds_GetVariableOffset(nullptr, "x", &offset));

    EXPECT_EQ(axioline::getLastError(), "lookup failed");
}
