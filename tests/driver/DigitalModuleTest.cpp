// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "vplc/Station.h"

namespace {

std::vector<uint8_t> bytes(std::initializer_list<uint8_t> values) {
    return values;
}

void setInputByteInGds(vplc::Station& station, int position, uint8_t byte) {
    const auto offset =
        station.variableOffset("Arp.Io.AxlC/" + std::to_string(position - 1) + ".~DI8");
    ASSERT_TRUE(offset.has_value());
    station.setFrameBytes(vplc::Frame::In, *offset, {byte});
}

}  // namespace

TEST(DigitalModule, ANewModuleDrivesAllOtherOutputsOffOnItsFirstWrite) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    const auto offset = station.variableOffset("Arp.Io.AxlC/0.~DO8");
    ASSERT_TRUE(offset.has_value());
    station.setFrameBytes(vplc::Frame::Out, *offset, {0xF6});
    AXL_F_DI8_1_DO8_1 module(1);

    module.writeDigital(0, 1);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x01}));
}

TEST(DigitalModule, AValueOtherThan0Or1SetsThePinToTheBitOfItsNegation) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    module.writeDigital(0, 1);
    module.writeDigital(5, 1);

    module.writeDigital(0, 2);  // -2 has bit 0 clear
    module.writeDigital(4, 2);  // and bits 1 to 7 set
    EXPECT_EQ(station.outputsInGds(1), bytes({0x30}));

    module.writeDigital(0, 255);  // -255 has bit 0 set
    module.writeDigital(5, 255);  // and bits 1 to 7 clear
    EXPECT_EQ(station.outputsInGds(1), bytes({0x11}));
}

TEST(DigitalModule, ReadingAnInputByteOf0x80Gives1ForPin7And0ForPins0To6) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    setInputByteInGds(station, 1, 0x80);

    EXPECT_EQ(module.readDigital(7), 1);
    for (int pin = 0; pin < 7; ++pin) {
        EXPECT_EQ(module.readDigital(pin), 0) << "pin " << pin;
    }
}

TEST(DigitalModule, EachReadAndWriteLocksTheFrameOnceAndUnlocksIt) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    module.readDigital(2);
    module.writeDigital(2, 1);

    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 1);
    EXPECT_EQ(station.calls("ArpPlcGds_EndRead"), 1);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 1);
    EXPECT_EQ(station.calls("ArpPlcGds_EndWrite"), 1);
    EXPECT_EQ(station.openLocks(), 0);
    EXPECT_EQ(station.unmatchedEnds(), 0);
}

TEST(DigitalModule, TheModuleAtPosition3UsesTheThirdModulesBytes) {
    auto station =
        vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::DI8_DO8, vplc::Module::DI8_DO8});
    setInputByteInGds(station, 3, 0x04);
    AXL_F_DI8_1_DO8_1 module(3);

    module.writeDigital(1, 1);

    EXPECT_EQ(module.readDigital(2), 1);
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00}));
    EXPECT_EQ(station.outputsInGds(2), bytes({0x00}));
    EXPECT_EQ(station.outputsInGds(3), bytes({0x02}));
}

TEST(DigitalModule, AcquiresBothFrameBuffersAndReleasesThemWhenDestroyed) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    {
        AXL_F_DI8_1_DO8_1 module(1);
        EXPECT_EQ(station.buffersHeld(), 2);
    }
    EXPECT_EQ(station.buffersHeld(), 0);
    EXPECT_EQ(station.calls("ArpPlcIo_ReleaseGdsBuffer"), 2);
}

TEST(DigitalModule, ABitWhoseWriteFailedIsCarriedByTheNextSuccessfulWrite) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    station.inject("ArpPlcGds_BeginWrite", vplc::Fault::next("frame is busy"));
    module.writeDigital(3, 1);

    module.writeDigital(0, 1);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x09}));
}

TEST(DigitalModule, AnInputAndAnOutputOnTheSamePinAreIndependent) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_TRUE(module.registerService(4, DigitalIn));
    EXPECT_FALSE(module.isServiceAlreadyRegistered(4, DigitalOut));
    EXPECT_TRUE(module.registerService(4, DigitalOut));
    EXPECT_FALSE(module.isServiceAlreadyRegistered(5, DigitalIn));
}
