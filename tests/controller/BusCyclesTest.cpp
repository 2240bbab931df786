// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "vplc/Station.h"

using vplc::Frame;
using vplc::Module;
using vplc::Station;

TEST(BusCycles, AnInputReachesTheGdsOnlyWithReadFromAxioToGds) {
    auto station = Station::of({Module::DI8_DO8});
    station.setDigitalInputs(1, 0x81);
    EXPECT_EQ(station.inputsInGds(1), (std::vector<uint8_t>{0x00}));

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(station.inputsInGds(1), (std::vector<uint8_t>{0x81}));
}

TEST(BusCycles, AnOutputWrittenToTheGdsReachesTheBusOnlyWithWriteFromGdsToAxio) {
    auto station = Station::of({Module::DI8_DO8});
    station.setFrameBytes(Frame::Out, 2, {0x28});
    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x00);

    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x28);
}

TEST(BusCycles, ReadingTheInputsLeavesTheOutputsAlone) {
    auto station = Station::of({Module::DI8_DO8});
    station.setFrameBytes(Frame::Out, 2, {0x28});

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x00);
}

TEST(BusCycles, DigitalPinNIsBitNOfTheInputByte) {
    auto station = Station::of({Module::DI8_DO8});
    station.setDigitalInput(1, 7, true);
    station.setDigitalInput(1, 3, true);
    station.setDigitalInput(1, 7, false);

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(station.inputsInGds(1), (std::vector<uint8_t>{0x08}));
}

TEST(BusCycles, AnalogInputWordsAreBigEndianInTheGds) {
    auto station = Station::of({Module::DI8_DO8, Module::AI2_AO2});
    station.setAnalogInput(2, 0, 30000);
    station.setAnalogInput(2, 1, 15000);

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(station.inputsInGds(2), (std::vector<uint8_t>{0x75, 0x30, 0x3A, 0x98}));
}

TEST(BusCycles, AnalogOutputWordsAreReadBigEndianFromTheGds) {
    auto station = Station::of({Module::DI8_DO8, Module::AI2_AO2});
    station.setFrameBytes(Frame::Out, 4, {0x75, 0x30, 0x3A, 0x98});

    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(station.analogOutputOnBus(2, 0), 30000);
    EXPECT_EQ(station.analogOutputOnBus(2, 1), 15000);
    EXPECT_EQ(station.outputsOnBus(2), (std::vector<uint8_t>{0x75, 0x30, 0x3A, 0x98}));
}

TEST(BusCycles, EveryModuleGetsItsOwnPartOfTheFrames) {
    auto station = Station::of({Module::DI8_DO8, Module::DI8_DO8});
    station.setDigitalInputs(1, 0x01);
    station.setDigitalInputs(2, 0x02);
    station.setFrameBytes(Frame::Out, 2, {0x10, 0x00, 0x20});

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(station.frameBytes(Frame::In), (std::vector<uint8_t>{0, 0, 0x01, 0, 0x02}));
    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x10);
    EXPECT_EQ(station.digitalOutputsOnBus(2), 0x20);
}

TEST(BusCycles, ATimeoutOtherThanZeroCopiesJustTheSame) {
    auto station = Station::of({Module::DI8_DO8});
    station.setDigitalInputs(1, 0x42);
    station.setFrameBytes(Frame::Out, 2, {0x24});

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(5));
    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(1000));

    EXPECT_EQ(station.inputsInGds(1), (std::vector<uint8_t>{0x42}));
    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x24);
}

TEST(Terminals, APositionOffTheBusIsOutOfRange) {
    auto station = Station::of({Module::DI8_DO8});
    EXPECT_THROW(station.setDigitalInputs(0, 1), std::out_of_range);
    EXPECT_THROW(station.setDigitalInputs(2, 1), std::out_of_range);
    EXPECT_THROW(station.inputsInGds(2), std::out_of_range);
}

TEST(Terminals, APinOrChannelTheModuleDoesNotHaveIsOutOfRange) {
    auto station = Station::of({Module::DI8_DO8, Module::AI2_AO2});
    EXPECT_THROW(station.setDigitalInput(1, 8, true), std::out_of_range);
    EXPECT_THROW(station.setDigitalInput(1, -1, true), std::out_of_range);
    EXPECT_THROW(station.setAnalogInput(2, 2, 0), std::out_of_range);
    EXPECT_THROW(station.analogOutputOnBus(2, -1), std::out_of_range);
}

TEST(Terminals, ADigitalOperationOnAnAnalogModuleIsALogicError) {
    auto station = Station::of({Module::DI8_DO8, Module::AI2_AO2});
    EXPECT_THROW(station.setDigitalInputs(2, 1), std::logic_error);
    EXPECT_THROW(station.setAnalogInput(1, 0, 1), std::logic_error);
    EXPECT_THROW(station.digitalOutputsOnBus(2), std::logic_error);
}

TEST(Terminals, ModulesAreListedInBusOrder) {
    auto station = Station::of({Module::AI2_AO2, Module::DI8_DO8});
    EXPECT_EQ(station.modules(), (std::vector<Module>{Module::AI2_AO2, Module::DI8_DO8}));
}

TEST(Terminals, OrderNamesMapBothWays) {
    EXPECT_EQ(vplc::orderName(Module::DI8_DO8), "AXL_F_DI8_1_DO8_1");
    EXPECT_EQ(vplc::orderName(Module::AI2_AO2), "AXL_F_AI2_AO2");
    EXPECT_EQ(vplc::moduleFromOrderName("AXL_F_AI2_AO2"), Module::AI2_AO2);
    EXPECT_EQ(vplc::moduleFromOrderName("AXL_F_DI8_1_DO8_1"), Module::DI8_DO8);
    EXPECT_EQ(vplc::moduleFromOrderName("axl_f_ai2_ao2"), std::nullopt);
}

TEST(Terminals, SettingFrameBytesPastTheEndOfTheFrameIsOutOfRange) {
    auto station = Station::of({Module::DI8_DO8});
    EXPECT_THROW(station.setFrameBytes(Frame::Out, 2, {1, 2}), std::out_of_range);
    EXPECT_THROW(station.setFrameBytes(Frame::Out, 4, {}), std::out_of_range);
    EXPECT_NO_THROW(station.setFrameBytes(Frame::Out, 3, {}));
}
