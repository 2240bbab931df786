// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "GdsAccess.h"
#include "vplc/Station.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Frame;
using vplc::Module;
using vplc::Station;

namespace {

std::size_t offsetIn(TGdsBuffer* handle, const char* variable) {
    std::size_t offset = 9999;
    EXPECT_TRUE(ArpPlcGds_GetVariableOffset(handle, variable, &offset)) << lastError();
    return offset;
}

// Asks the frame for a variable it does not hold: the call fails with the error text and leaves
// the offset as it was.
void expectNoSuchVariable(const char* frame, const char* variable, const std::string& error) {
    TGdsBuffer* handle = acquire(frame);
    std::size_t offset = 12345;

    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(handle, variable, &offset));
    EXPECT_EQ(lastError(), error);
    EXPECT_EQ(offset, 12345u);
    ArpPlcIo_ReleaseGdsBuffer(handle);
}

}  // namespace

TEST(GdsFrames, AMixedBusPutsEveryModuleAtAnEvenOffsetAfterTheStatusWord) {
    auto station = Station::builder()
                       .module(Module::DI8_DO8)
                       .module(Module::AI2_AO2)
                       .module(Module::DI8_DO8)
                       .build();
    TGdsBuffer* in = acquire("1:IN");
    TGdsBuffer* out = acquire("1:OUT");

    EXPECT_EQ(offsetIn(in, "Arp.Io.AxlC/0.~DI8"), 2u);
    EXPECT_EQ(offsetIn(in, "Arp.Io.AxlC/1.~AI32"), 4u);
    EXPECT_EQ(offsetIn(in, "Arp.Io.AxlC/2.~DI8"), 8u);
    EXPECT_EQ(offsetIn(out, "Arp.Io.AxlC/0.~DO8"), 2u);
    EXPECT_EQ(offsetIn(out, "Arp.Io.AxlC/1.~AQ32"), 4u);
    EXPECT_EQ(offsetIn(out, "Arp.Io.AxlC/2.~DO8"), 8u);

    ArpPlcIo_ReleaseGdsBuffer(out);
    ArpPlcIo_ReleaseGdsBuffer(in);
}

TEST(GdsFrames, EachFrameEndsWithTheLastModulesData) {
    auto station = Station::of({Module::DI8_DO8, Module::AI2_AO2, Module::DI8_DO8});
    EXPECT_EQ(station.frameBytes(Frame::In).size(), 9u);
    EXPECT_EQ(station.frameBytes(Frame::Out).size(), 9u);
}

TEST(GdsFrames, ADigitalModuleAfterAnAnalogOneEndsTheFrameOnAnOddSize) {
    auto station = Station::of({Module::AI2_AO2, Module::DI8_DO8});
    EXPECT_EQ(station.variableOffset("Arp.Io.AxlC/1.~DI8"), 6u);
    EXPECT_EQ(station.frameBytes(Frame::In).size(), 7u);
}

TEST(GdsFrames, AnEmptyBusHasOnlyTheStatusWord) {
    auto station = Station::of({});
    EXPECT_EQ(station.frameBytes(Frame::In), (std::vector<uint8_t>{0, 0}));
    EXPECT_EQ(station.frameBytes(Frame::Out), (std::vector<uint8_t>{0, 0}));
}

TEST(GdsFrames, TheStatusWordReadsZeroAfterABusCycle) {
    auto station = Station::of({Module::DI8_DO8});
    station.setDigitalInputs(1, 0xFF);
    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(station.frameBytes(Frame::In), (std::vector<uint8_t>{0, 0, 0xFF}));
}

TEST(GdsFrames, TheStationFindsPortVariablesOfBothFrames) {
    auto station = Station::of({Module::DI8_DO8, Module::AI2_AO2});
    EXPECT_EQ(station.variableOffset("Arp.Io.AxlC/0.~DO8"), 2u);
    EXPECT_EQ(station.variableOffset("Arp.Io.AxlC/1.~AI32"), 4u);
    EXPECT_EQ(station.variableOffset("Arp.Io.AxlC/2.~AI32"), std::nullopt);
}

TEST(GdsFrames, AnInputPortIsNoVariableOfTheOutputFrame) {
    auto station = Station::of({Module::DI8_DO8});
    expectNoSuchVariable("1:OUT", "Arp.Io.AxlC/0.~DI8",
                         "Variable 'Arp.Io.AxlC/0.~DI8' does not exist in buffer '1:OUT'");
}

TEST(GdsFrames, AnUnknownVariableFailsWithItsNameAndLeavesTheOffsetUntouched) {
    auto station = Station::of({Module::DI8_DO8});
    expectNoSuchVariable("1:IN", "Arp.Io.AxlC/7.~DI8",
                         "Variable 'Arp.Io.AxlC/7.~DI8' does not exist in buffer '1:IN'");
}

TEST(GdsFrames, AVariableNameIsMatchedExactly) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* in = acquire("1:IN");
    std::size_t offset = 0;

    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in, "arp.io.axlc/0.~DI8", &offset));
    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in, "Arp.Io.AxlC/0.~DI8 ", &offset));
    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in, "Arp.Io.AxlC/-1.~DI8", &offset));
    ArpPlcIo_ReleaseGdsBuffer(in);
}

TEST(GdsFrames, AnUnknownBufferIdFailsAndLeavesTheHandleUntouched) {
    auto station = Station::of({Module::DI8_DO8});
    auto* untouched = reinterpret_cast<TGdsBuffer*>(0x1234);
    TGdsBuffer* handle = untouched;

    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", "1:INOUT", &handle));
    EXPECT_EQ(lastError(), "Buffer '1:INOUT' does not exist in I/O system 'Arp.Io.AxlC'");
    EXPECT_EQ(handle, untouched);
    EXPECT_EQ(station.buffersHeld(), 0);
}

TEST(GdsFrames, AnUnknownIoSystemFails) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* handle = nullptr;

    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.PnC", "1:IN", &handle));
    EXPECT_EQ(lastError(), "I/O system 'Arp.Io.PnC' does not exist");
    EXPECT_EQ(handle, nullptr);
}

TEST(GdsFrames, NullArgumentsFailWithATextNamingTheArgument) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* handle = nullptr;
    std::size_t offset = 0;
    char* data = nullptr;

    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID(nullptr, "1:IN", &handle));
    EXPECT_EQ(lastError(), "ArpPlcIo_GetBufferPtrByBufferID: ioSystemName is null");
    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", nullptr, &handle));
    EXPECT_EQ(lastError(), "ArpPlcIo_GetBufferPtrByBufferID: bufferId is null");
    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", "1:IN", nullptr));
    EXPECT_EQ(lastError(), "ArpPlcIo_GetBufferPtrByBufferID: ppBuffer is null");

    TGdsBuffer* in = acquire("1:IN");
    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in, nullptr, &offset));
    EXPECT_EQ(lastError(), "ArpPlcGds_GetVariableOffset: variableName is null");
    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(in, "Arp.Io.AxlC/0.~DI8", nullptr));
    EXPECT_EQ(lastError(), "ArpPlcGds_GetVariableOffset: pOffset is null");
    EXPECT_FALSE(ArpPlcGds_BeginRead(in, nullptr));
    EXPECT_EQ(lastError(), "ArpPlcGds_BeginRead: ppData is null");
    EXPECT_FALSE(ArpPlcGds_BeginWrite(nullptr, &data));
    EXPECT_EQ(lastError(), "ArpPlcGds_BeginWrite: pBuffer is null");
    EXPECT_FALSE(ArpPlcGds_EndWrite(nullptr));
    EXPECT_EQ(lastError(), "ArpPlcGds_EndWrite: pBuffer is null");
    EXPECT_EQ(station.openLocks(), 0);
    ArpPlcIo_ReleaseGdsBuffer(in);
}

TEST(GdsFrames, WithoutAStationEveryCallReportsThatNoBusIsRunning) {
    TGdsBuffer* handle = nullptr;

    EXPECT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", "1:IN", &handle));
    EXPECT_EQ(lastError(), "No Axioline bus is running");
    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(), "No Axioline bus is running");
    EXPECT_FALSE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_EQ(lastError(), "No Axioline bus is running");
}
