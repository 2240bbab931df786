// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <vector>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "BusFrames.h"
#include "GdsAccess.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Station.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Fault;
using vplc::Frame;
using vplc::Module;
using vplc::Station;

namespace {

class Faults : public controllertest::BusFrames {
protected:
    ~Faults() override { station_.clearFaults(); }
};

}  // namespace

TEST_F(Faults, ANextFaultFailsOneCallWithItsText) {
    station_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(), "Bus not ready");
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
}

TEST_F(Faults, ATimesFaultFailsThatManyCalls) {
    station_.inject("ArpPlcAxio_WriteFromGdsToAxio", Fault::times(2, "Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));
}

TEST_F(Faults, AnAlwaysFaultFailsEveryCallUntilTheFaultsAreCleared) {
    station_.inject("ArpPlcAxio_WriteFromGdsToAxio", Fault::always("Bus gone"));
    for (int call = 0; call < 5; ++call) {
        EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
        EXPECT_EQ(lastError(), "Bus gone");
    }

    station_.clearFaults();

    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));
}

TEST_F(Faults, AFaultFailsOnlyTheCallItIsInjectedInto) {
    station_.inject("ArpPlcGds_BeginWrite", Fault::always("Locked"));
    char* data = nullptr;

    EXPECT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(Faults, ASecondFaultForTheSameCallReplacesTheFirst) {
    station_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::always("First"));
    station_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Second"));

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(), "Second");
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
}

TEST_F(Faults, AFaultCountMustBeAtLeastOne) {
    EXPECT_THROW(Fault::times(0, "Never"), std::invalid_argument);
    EXPECT_EQ(Fault::times(3, "x").remaining(), 3);
    EXPECT_EQ(Fault::always("x").remaining(), -1);
    EXPECT_EQ(Fault::next("x").errorText(), "x");
}

TEST_F(Faults, AFailedGetVariableOffsetLeavesTheOffsetUntouched) {
    station_.inject("ArpPlcGds_GetVariableOffset", Fault::next("No such port"));
    std::size_t offset = 777;

    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in_, "Arp.Io.AxlC/0.~DI8", &offset));
    EXPECT_EQ(offset, 777u);
    EXPECT_EQ(lastError(), "No such port");
}

TEST_F(Faults, AFailedAcquisitionLeavesTheHandleUntouchedAndHoldsNothing) {
    station_.inject("ArpPlcIo_GetBufferPtrByBufferID", Fault::next("Out of handles"));
    auto* untouched = reinterpret_cast<TGdsBuffer*>(0x99);
    TGdsBuffer* handle = untouched;

    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", "1:IN", &handle));
    EXPECT_EQ(handle, untouched);
    EXPECT_EQ(station_.buffersHeld(), 2);
}

TEST_F(Faults, AFailedReleaseKeepsTheBufferHeld) {
    station_.inject("ArpPlcIo_ReleaseGdsBuffer", Fault::next("Busy"));
    TGdsBuffer* extra = acquire("1:IN");

    EXPECT_FALSE(ArpPlcIo_ReleaseGdsBuffer(extra));
    EXPECT_EQ(station_.buffersHeld(), 3);
    EXPECT_TRUE(ArpPlcIo_ReleaseGdsBuffer(extra));
}

TEST_F(Faults, AFailedBeginTakesNoLockAndLeavesTheDataPointerUntouched) {
    station_.inject("ArpPlcGds_BeginRead", Fault::next("Locked"));
    station_.inject("ArpPlcGds_BeginWrite", Fault::next("Locked"));
    char* untouched = reinterpret_cast<char*>(0x42);
    char* data = untouched;

    EXPECT_FALSE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_FALSE(ArpPlcGds_BeginWrite(out_, &data));
    EXPECT_EQ(data, untouched);
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(Faults, TheEndThatFollowsAFailedBeginIsAnUnmatchedEnd) {
    station_.inject("ArpPlcGds_BeginRead", Fault::next("Locked"));
    char* data = nullptr;

    EXPECT_FALSE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_EQ(lastError(), "Locked");
    EXPECT_FALSE(ArpPlcGds_EndRead(in_));
    EXPECT_EQ(station_.unmatchedEnds(), 1);
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(Faults, AFailedEndKeepsTheLockUntilTheThreadsNextEnd) {
    station_.inject("ArpPlcGds_EndWrite", Fault::next("Cannot unlock"));
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginWrite(out_, &data));

    EXPECT_FALSE(ArpPlcGds_EndWrite(out_));
    EXPECT_EQ(lastError(), "Cannot unlock");
    EXPECT_EQ(station_.openLocks(), 1);
    EXPECT_EQ(station_.unmatchedEnds(), 0);

    EXPECT_TRUE(ArpPlcGds_EndWrite(out_));
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(Faults, FailedBusCopiesCopyNothing) {
    station_.setDigitalInputs(1, 0xAA);
    station_.setFrameBytes(Frame::Out, 2, {0x55});
    station_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Bus not ready"));
    station_.inject("ArpPlcAxio_WriteFromGdsToAxio", Fault::next("Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(station_.inputsInGds(1), (std::vector<uint8_t>{0x00}));
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x00);
}

TEST_F(Faults, EveryCallIsCountedByItsCNameWhetherItSucceedsOrFails) {
    station_.inject("ArpPlcGds_BeginRead", Fault::next("Locked"));
    char* data = nullptr;
    ArpPlcGds_BeginRead(in_, &data);
    ArpPlcGds_EndRead(in_);
    ArpPlcGds_BeginRead(in_, &data);
    ArpPlcGds_EndRead(in_);
    lastError();

    EXPECT_EQ(station_.calls("ArpPlcIo_GetBufferPtrByBufferID"), 2);
    EXPECT_EQ(station_.calls("ArpPlcGds_BeginRead"), 2);
    EXPECT_EQ(station_.calls("ArpPlcGds_EndRead"), 2);
    EXPECT_EQ(station_.calls("ArpPlc_GetLastError"), 1);
    EXPECT_EQ(station_.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST_F(Faults, ResetCountersStartsTheCountsAfresh) {
    ArpPlcGds_EndRead(in_);
    ASSERT_EQ(station_.unmatchedEnds(), 1);
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    ArpPlcGds_BeginRead(in_, &data);
    ASSERT_EQ(station_.nestedBegins(), 1);

    station_.resetCounters();

    EXPECT_EQ(station_.calls("ArpPlcGds_EndRead"), 0);
    EXPECT_EQ(station_.calls("ArpPlcIo_GetBufferPtrByBufferID"), 0);
    EXPECT_EQ(station_.unmatchedEnds(), 0);
    EXPECT_EQ(station_.nestedBegins(), 0);
    EXPECT_EQ(station_.openLocks(), 1);
    EXPECT_EQ(station_.buffersHeld(), 2);
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(Faults, PlatformCallCountsAndFailsCallsOutsideTheCInterface) {
    EXPECT_EQ(vplc::platformCall("ArpSystemModuleMain"), std::nullopt);
    station_.inject("ArpSystemModuleMain", Fault::next("Settings file missing"));

    EXPECT_EQ(vplc::platformCall("ArpSystemModuleMain"), "Settings file missing");
    EXPECT_EQ(lastError(), "Settings file missing");
    EXPECT_EQ(station_.calls("ArpSystemModuleMain"), 2);
}

TEST(FaultLifetime, BuildingAStationStartsCountsAndFaultsAfresh) {
    vplc::inject("ArpPlcAxio_ReadFromAxioToGds", Fault::always("Stale"));
    ArpPlcAxio_ReadFromAxioToGds(0);

    auto station = Station::of({Module::DI8_DO8});

    EXPECT_EQ(station.calls("ArpPlcAxio_ReadFromAxioToGds"), 0);
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
}

TEST(FaultLifetime, DestroyingAStationClearsItsFaultsButKeepsTheCounts) {
    {
        auto station = Station::of({Module::DI8_DO8});
        station.inject("ArpSystemModuleMain", Fault::always("Stale"));
        vplc::platformCall("ArpSystemModuleMain");
    }

    EXPECT_EQ(vplc::platformCall("ArpSystemModuleMain"), std::nullopt);
    EXPECT_EQ(vplc::calls("ArpSystemModuleMain"), 2);
}
