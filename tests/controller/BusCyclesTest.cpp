// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "vplc/Plant.h"

using vplc::Frame;
using vplc::Module;
using vplc::Plant;

TEST(BusCycles, AnInputReachesTheGdsOnlyWithReadFromAxioToGds) {
    auto plant = Plant::of({Module::DI8_DO8});
    plant.setDigitalInputs(1, 0x81);
    EXPECT_EQ(plant.inputsInGds(1), (std::vector<uint8_t>{0x00}));

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(plant.inputsInGds(1), (std::vector<uint8_t>{0x81}));
}

TEST(BusCycles, AnOutputWrittenToTheGdsReachesTheBusOnlyWithWriteFromGdsToAxio) {
    auto plant = Plant::of({Module::DI8_DO8});
    plant.setFrameBytes(Frame::Out, 2, {0x28});
    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x00);

    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x28);
}

TEST(BusCycles, ReadingTheInputsLeavesTheOutputsAlone) {
    auto plant = Plant::of({Module::DI8_DO8});
    plant.setFrameBytes(Frame::Out, 2, {0x28});

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x00);
}

TEST(BusCycles, DigitalPinNIsBitNOfTheInputByte) {
    auto plant = Plant::of({Module::DI8_DO8});
    plant.setDigitalInput(1, 7, true);
    plant.setDigitalInput(1, 3, true);
    plant.setDigitalInput(1, 7, false);

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(plant.inputsInGds(1), (std::vector<uint8_t>{0x08}));
}

TEST(BusCycles, AnalogInputWordsAreBigEndianInTheGds) {
    auto plant = Plant::of({Module::DI8_DO8, Module::AI2_AO2});
    plant.setAnalogInput(2, 0, 30000);
    plant.setAnalogInput(2, 1, 15000);

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(plant.inputsInGds(2), (std::vector<uint8_t>{0x75, 0x30, 0x3A, 0x98}));
}

TEST(BusCycles, AnalogOutputWordsAreReadBigEndianFromTheGds) {
    auto plant = Plant::of({Module::DI8_DO8, Module::AI2_AO2});
    plant.setFrameBytes(Frame::Out, 4, {0x75, 0x30, 0x3A, 0x98});

    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(plant.analogOutputOnBus(2, 0), 30000);
    EXPECT_EQ(plant.analogOutputOnBus(2, 1), 15000);
    EXPECT_EQ(plant.outputsOnBus(2), (std::vector<uint8_t>{0x75, 0x30, 0x3A, 0x98}));
}

TEST(BusCycles, EveryModuleGetsItsOwnPartOfTheFrames) {
    auto plant = Plant::of({Module::DI8_DO8, Module::DI8_DO8});
    plant.setDigitalInputs(1, 0x01);
    plant.setDigitalInputs(2, 0x02);
    plant.setFrameBytes(Frame::Out, 2, {0x10, 0x00, 0x20});

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(plant.frameBytes(Frame::In), (std::vector<uint8_t>{0, 0, 0x01, 0, 0x02}));
    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x10);
    EXPECT_EQ(plant.digitalOutputsOnBus(2), 0x20);
}

TEST(BusCycles, ATimeoutOtherThanZeroCopiesJustTheSame) {
    auto plant = Plant::of({Module::DI8_DO8});
    plant.setDigitalInputs(1, 0x42);
    plant.setFrameBytes(Frame::Out, 2, {0x24});

    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(5));
    ASSERT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(1000));

    EXPECT_EQ(plant.inputsInGds(1), (std::vector<uint8_t>{0x42}));
    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x24);
}

TEST(Terminals, APositionOffTheBusIsOutOfRange) {
    auto plant = Plant::of({Module::DI8_DO8});
    EXPECT_THROW(plant.setDigitalInputs(0, 1), std::out_of_range);
    EXPECT_THROW(plant.setDigitalInputs(2, 1), std::out_of_range);
    EXPECT_THROW(plant.inputsInGds(2), std::out_of_range);
}

TEST(Terminals, APinOrChannelTheModuleDoesNotHaveIsOutOfRange) {
    auto plant = Plant::of({Module::DI8_DO8, Module::AI2_AO2});
    EXPECT_THROW(plant.setDigitalInput(1, 8, true), std::out_of_range);
    EXPECT_THROW(plant.setDigitalInput(1, -1, true), std::out_of_range);
    EXPECT_THROW(plant.setAnalogInput(2, 2, 0), std::out_of_range);
    EXPECT_THROW(plant.analogOutputOnBus(2, -1), std::out_of_range);
}

TEST(Terminals, ADigitalOperationOnAnAnalogModuleIsALogicError) {
    auto plant = Plant::of({Module::DI8_DO8, Module::AI2_AO2});
    EXPECT_THROW(plant.setDigitalInputs(2, 1), std::logic_error);
    EXPECT_THROW(plant.setAnalogInput(1, 0, 1), std::logic_error);
    EXPECT_THROW(plant.digitalOutputsOnBus(2), std::logic_error);
}

TEST(Terminals, ModulesAreListedInBusOrder) {
    auto plant = Plant::of({Module::AI2_AO2, Module::DI8_DO8});
    EXPECT_EQ(plant.modules(), (std::vector<Module>{Module::AI2_AO2, Module::DI8_DO8}));
}

TEST(Terminals, OrderNamesMapBothWays) {
    EXPECT_EQ(vplc::orderName(Module::DI8_DO8), "AXL_F_DI8_1_DO8_1");
    EXPECT_EQ(vplc::orderName(Module::AI2_AO2), "AXL_F_AI2_AO2");
    EXPECT_EQ(vplc::moduleFromOrderName("AXL_F_AI2_AO2"), Module::AI2_AO2);
    EXPECT_EQ(vplc::moduleFromOrderName("AXL_F_DI8_1_DO8_1"), Module::DI8_DO8);
    EXPECT_EQ(vplc::moduleFromOrderName("axl_f_ai2_ao2"), std::nullopt);
}

TEST(Terminals, SettingFrameBytesPastTheEndOfTheFrameIsOutOfRange) {
    auto plant = Plant::of({Module::DI8_DO8});
    EXPECT_THROW(plant.setFrameBytes(Frame::Out, 2, {1, 2}), std::out_of_range);
    EXPECT_THROW(plant.setFrameBytes(Frame::Out, 4, {}), std::out_of_range);
    EXPECT_NO_THROW(plant.setFrameBytes(Frame::Out, 3, {}));
}
