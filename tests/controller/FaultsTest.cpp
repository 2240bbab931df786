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
#include "vplc/Plant.h"
#include "vplc/PlatformCalls.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Fault;
using vplc::Frame;
using vplc::Module;
using vplc::Plant;

namespace {

class Faults : public controllertest::BusFrames {
protected:
    ~Faults() override { plant_.clearFaults(); }
};

}  // namespace

TEST_F(Faults, ANextFaultFailsOneCallWithItsText) {
    plant_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(), "Bus not ready");
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
}

TEST_F(Faults, ATimesFaultFailsThatManyCalls) {
    plant_.inject("ArpPlcAxio_WriteFromGdsToAxio", Fault::times(2, "Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));
}

TEST_F(Faults, AnAlwaysFaultFailsEveryCallUntilTheFaultsAreCleared) {
    plant_.inject("ArpPlcAxio_WriteFromGdsToAxio", Fault::always("Bus gone"));
    for (int call = 0; call < 5; ++call) {
        EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
        EXPECT_EQ(lastError(), "Bus gone");
    }

    plant_.clearFaults();

    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));
}

TEST_F(Faults, AFaultFailsOnlyTheCallItIsInjectedInto) {
    plant_.inject("ArpPlcGds_BeginWrite", Fault::always("Locked"));
    char* data = nullptr;

    EXPECT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(Faults, ASecondFaultForTheSameCallReplacesTheFirst) {
    plant_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::always("First"));
    plant_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Second"));

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
    plant_.inject("ArpPlcGds_GetVariableOffset", Fault::next("No such port"));
    std::size_t offset = 777;

    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in_, "Arp.Io.AxlC/0.~DI8", &offset));
    EXPECT_EQ(offset, 777u);
    EXPECT_EQ(lastError(), "No such port");
}

TEST_F(Faults, AFailedAcquisitionLeavesTheHandleUntouchedAndHoldsNothing) {
    plant_.inject("ArpPlcIo_GetBufferPtrByBufferID", Fault::next("Out of handles"));
    auto* untouched = reinterpret_cast<TGdsBuffer*>(0x99);
    TGdsBuffer* handle = untouched;

    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", "1:IN", &handle));
    EXPECT_EQ(handle, untouched);
    EXPECT_EQ(plant_.buffersHeld(), 2);
}

TEST_F(Faults, AFailedReleaseKeepsTheBufferHeld) {
    plant_.inject("ArpPlcIo_ReleaseGdsBuffer", Fault::next("Busy"));
    TGdsBuffer* extra = acquire("1:IN");

    EXPECT_FALSE(ArpPlcIo_ReleaseGdsBuffer(extra));
    EXPECT_EQ(plant_.buffersHeld(), 3);
    EXPECT_TRUE(ArpPlcIo_ReleaseGdsBuffer(extra));
}

TEST_F(Faults, AFailedBeginTakesNoLockAndLeavesTheDataPointerUntouched) {
    plant_.inject("ArpPlcGds_BeginRead", Fault::next("Locked"));
    plant_.inject("ArpPlcGds_BeginWrite", Fault::next("Locked"));
    char* untouched = reinterpret_cast<char*>(0x42);
    char* data = untouched;

    EXPECT_FALSE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_FALSE(ArpPlcGds_BeginWrite(out_, &data));
    EXPECT_EQ(data, untouched);
    EXPECT_EQ(plant_.openLocks(), 0);
}

TEST_F(Faults, TheEndThatFollowsAFailedBeginIsAnUnmatchedEnd) {
    plant_.inject("ArpPlcGds_BeginRead", Fault::next("Locked"));
    char* data = nullptr;

    EXPECT_FALSE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_EQ(lastError(), "Locked");
    EXPECT_FALSE(ArpPlcGds_EndRead(in_));
    EXPECT_EQ(plant_.unmatchedEnds(), 1);
    EXPECT_EQ(plant_.openLocks(), 0);
}

TEST_F(Faults, AFailedEndKeepsTheLockUntilTheThreadsNextEnd) {
    plant_.inject("ArpPlcGds_EndWrite", Fault::next("Cannot unlock"));
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginWrite(out_, &data));

    EXPECT_FALSE(ArpPlcGds_EndWrite(out_));
    EXPECT_EQ(lastError(), "Cannot unlock");
    EXPECT_EQ(plant_.openLocks(), 1);
    EXPECT_EQ(plant_.unmatchedEnds(), 0);

    EXPECT_TRUE(ArpPlcGds_EndWrite(out_));
    EXPECT_EQ(plant_.openLocks(), 0);
}

TEST_F(Faults, FailedBusCopiesCopyNothing) {
    plant_.setDigitalInputs(1, 0xAA);
    plant_.setFrameBytes(Frame::Out, 2, {0x55});
    plant_.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Bus not ready"));
    plant_.inject("ArpPlcAxio_WriteFromGdsToAxio", Fault::next("Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(plant_.inputsInGds(1), (std::vector<uint8_t>{0x00}));
    EXPECT_EQ(plant_.digitalOutputsOnBus(1), 0x00);
}

TEST_F(Faults, EveryCallIsCountedByItsCNameWhetherItSucceedsOrFails) {
    plant_.inject("ArpPlcGds_BeginRead", Fault::next("Locked"));
    char* data = nullptr;
    ArpPlcGds_BeginRead(in_, &data);
    ArpPlcGds_EndRead(in_);
    ArpPlcGds_BeginRead(in_, &data);
    ArpPlcGds_EndRead(in_);
    lastError();

    EXPECT_EQ(plant_.calls("ArpPlcIo_GetBufferPtrByBufferID"), 2);
    EXPECT_EQ(plant_.calls("ArpPlcGds_BeginRead"), 2);
    EXPECT_EQ(plant_.calls("ArpPlcGds_EndRead"), 2);
    EXPECT_EQ(plant_.calls("ArpPlc_GetLastError"), 1);
    EXPECT_EQ(plant_.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST_F(Faults, ResetCountersStartsTheCountsAfresh) {
    ArpPlcGds_EndRead(in_);
    ASSERT_EQ(plant_.unmatchedEnds(), 1);
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    ArpPlcGds_BeginRead(in_, &data);
    ASSERT_EQ(plant_.nestedBegins(), 1);

    plant_.resetCounters();

    EXPECT_EQ(plant_.calls("ArpPlcGds_EndRead"), 0);
    EXPECT_EQ(plant_.calls("ArpPlcIo_GetBufferPtrByBufferID"), 0);
    EXPECT_EQ(plant_.unmatchedEnds(), 0);
    EXPECT_EQ(plant_.nestedBegins(), 0);
    EXPECT_EQ(plant_.openLocks(), 1);
    EXPECT_EQ(plant_.buffersHeld(), 2);
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(Faults, PlatformCallCountsAndFailsCallsOutsideTheCInterface) {
    EXPECT_EQ(vplc::platformCall("ArpSystemModuleMain"), std::nullopt);
    plant_.inject("ArpSystemModuleMain", Fault::next("Settings file missing"));

    EXPECT_EQ(vplc::platformCall("ArpSystemModuleMain"), "Settings file missing");
    EXPECT_EQ(lastError(), "Settings file missing");
    EXPECT_EQ(plant_.calls("ArpSystemModuleMain"), 2);
}

TEST(FaultLifetime, BuildingAPlantStartsCountsAndFaultsAfresh) {
    vplc::inject("ArpPlcAxio_ReadFromAxioToGds", Fault::always("Stale"));
    ArpPlcAxio_ReadFromAxioToGds(0);

    auto plant = Plant::of({Module::DI8_DO8});

    EXPECT_EQ(plant.calls("ArpPlcAxio_ReadFromAxioToGds"), 0);
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
}

TEST(FaultLifetime, DestroyingAPlantClearsItsFaultsButKeepsTheCounts) {
    {
        auto plant = Plant::of({Module::DI8_DO8});
        plant.inject("ArpSystemModuleMain", Fault::always("Stale"));
        vplc::platformCall("ArpSystemModuleMain");
    }

    EXPECT_EQ(vplc::platformCall("ArpSystemModuleMain"), std::nullopt);
    EXPECT_EQ(vplc::calls("ArpSystemModuleMain"), 2);
}
