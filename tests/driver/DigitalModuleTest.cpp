// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "hosting/LoggedLine.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

using hosting::LoggedLine;
using hosting::loggedLines;

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

TEST(DigitalModule, WritingPin3ThenPin5LeavesTheOutputByteAt0x28) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    module.writeDigital(3, 1);
    module.writeDigital(5, 1);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x28}));
}

TEST(DigitalModule, ClearingPin3After3And5LeavesTheOutputByteAt0x20) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    module.writeDigital(3, 1);
    module.writeDigital(5, 1);

    module.writeDigital(3, 0);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x20}));
}

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

TEST(DigitalModule, AFailedBeginWriteLogsAndStillCallsEndWrite) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_BeginWrite", vplc::Fault::next("frame is busy"));

    module.writeDigital(3, 1);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't begin write: %s", "Can't begin write: frame is busy"}}));
    EXPECT_EQ(station.calls("ArpPlcGds_EndWrite"), 1);
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00}));
}

TEST(DigitalModule, ABitWhoseWriteFailedIsCarriedByTheNextSuccessfulWrite) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    station.inject("ArpPlcGds_BeginWrite", vplc::Fault::next("frame is busy"));
    module.writeDigital(3, 1);

    module.writeDigital(0, 1);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x09}));
}

TEST(DigitalModule, AFailedEndWriteIsLoggedAfterTheByteWasStored) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_EndWrite", vplc::Fault::next("cannot unlock"));

    module.writeDigital(6, 1);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't unlock buffer: %s", "Can't unlock buffer: cannot unlock"}}));
    EXPECT_EQ(station.outputsInGds(1), bytes({0x40}));
    // The platform leaves the lock with this thread; the next write's End gives it back.
    module.writeDigital(6, 1);
    EXPECT_EQ(station.openLocks(), 0);
}

TEST(DigitalModule, AFailedBeginReadLogsCallsEndReadAndReadsZero) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    setInputByteInGds(station, 1, 0xFF);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_BeginRead", vplc::Fault::next("no data"));

    EXPECT_EQ(module.readDigital(4), 0);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{{2, "Can't begin read: %s", "Can't begin read: no data"}}));
    EXPECT_EQ(station.calls("ArpPlcGds_EndRead"), 1);
}

TEST(DigitalModule, AFailedEndReadIsLoggedAndTheValueReadIsStillReturned) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    setInputByteInGds(station, 1, 0x10);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_EndRead", vplc::Fault::next("cannot unlock"));

    EXPECT_EQ(module.readDigital(4), 1);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't unlock buffer: %s", "Can't unlock buffer: cannot unlock"}}));
    module.readDigital(4);
    EXPECT_EQ(station.openLocks(), 0);
}

TEST(DigitalModule, AnUnknownPortIsLoggedOncePerLookupAndTheModuleIsStillBuilt) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    orbel::Recorder recorder;

    AXL_F_DI8_1_DO8_1 module(2);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't get offset to port: %s",
                   "Can't get offset to port: Variable 'Arp.Io.AxlC/1.~DI8' does not exist in "
                   "buffer '1:IN'"},
                  {2, "Can't get offset to port: %s",
                   "Can't get offset to port: Variable 'Arp.Io.AxlC/1.~DO8' does not exist in "
                   "buffer '1:OUT'"}}));
    EXPECT_EQ(station.buffersHeld(), 2);
}

TEST(DigitalModule, PortsThatCouldNotBeFoundAreNeitherReadNorWritten) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    setInputByteInGds(station, 1, 0xFF);
    AXL_F_DI8_1_DO8_1 module(2);

    EXPECT_EQ(module.readDigital(0), 0);
    module.writeDigital(0, 1);

    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00}));
}

TEST(DigitalModule, PinsOutsideTheModuleAreNeitherReadNorWritten) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    setInputByteInGds(station, 1, 0xFF);
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_EQ(module.readDigital(8), 0);
    EXPECT_EQ(module.readDigital(-1), 0);
    module.writeDigital(8, 1);
    module.writeDigital(-1, 1);
    module.writeDigital(40, 1);

    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST(DigitalModule, AnalogOperationsReadZeroAndWriteNothing) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_EQ(module.readAnalog(0), 0);
    module.writeAnalog(0, 30000);

    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST(DigitalModule, SupportsDigitalInputsDigitalOutputsAndRestartOnly) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_FALSE(module.isServiceTypeSupported(AnalogIn));
    EXPECT_FALSE(module.isServiceTypeSupported(AnalogOut));
    EXPECT_TRUE(module.isServiceTypeSupported(DigitalIn));
    EXPECT_TRUE(module.isServiceTypeSupported(DigitalOut));
    EXPECT_TRUE(module.isServiceTypeSupported(RestartDevice));
    EXPECT_FALSE(module.isServiceTypeSupported(Unsupported));
    EXPECT_FALSE(module.isServiceTypeSupported(static_cast<ServiceType>(-1)));
}

TEST(DigitalModule, Pins0To7AreAvailableAndPin8AndMinus1AreNot) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    for (int pin = 0; pin < 8; ++pin) {
        EXPECT_TRUE(module.isServiceAvailable(pin, DigitalIn)) << "pin " << pin;
        EXPECT_TRUE(module.isServiceAvailable(pin, DigitalOut)) << "pin " << pin;
    }
    for (ServiceType type : {AnalogIn, AnalogOut, DigitalIn, DigitalOut, RestartDevice}) {
        EXPECT_FALSE(module.isServiceAvailable(8, type)) << "type " << type;
        EXPECT_FALSE(module.isServiceAvailable(-1, type)) << "type " << type;
    }
    EXPECT_FALSE(module.isServiceAvailable(0, AnalogIn));
}

TEST(DigitalModule, TheValidRangeIs0To7ForItsKindsAndEmptyForOthers) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_EQ(module.getValidRange(DigitalIn), "0 - 7");
    EXPECT_EQ(module.getValidRange(RestartDevice), "0 - 7");
    EXPECT_EQ(module.getValidRange(AnalogIn), "");
}

TEST(DigitalModule, RegisteringTheSamePinTwiceSucceedsOnlyTheFirstTime) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_FALSE(module.isServiceAlreadyRegistered(4, DigitalIn));
    EXPECT_TRUE(module.registerService(4, DigitalIn));
    EXPECT_TRUE(module.isServiceAlreadyRegistered(4, DigitalIn));
    EXPECT_FALSE(module.registerService(4, DigitalIn));
}

TEST(DigitalModule, AnInputAndAnOutputOnTheSamePinAreIndependent) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);

    EXPECT_TRUE(module.registerService(4, DigitalIn));
    EXPECT_FALSE(module.isServiceAlreadyRegistered(4, DigitalOut));
    EXPECT_TRUE(module.registerService(4, DigitalOut));
    EXPECT_FALSE(module.isServiceAlreadyRegistered(5, DigitalIn));
}

TEST(DigitalModule, UnavailablePinsAndRestartNeverCountAsTakenAndCannotBeRegistered) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    AXL_F_DI8_1_DO8_1 module(1);
    orbel::Recorder recorder;

    EXPECT_FALSE(module.isServiceAlreadyRegistered(8, DigitalIn));
    EXPECT_FALSE(module.isServiceAlreadyRegistered(0, RestartDevice));
    EXPECT_FALSE(module.registerService(0, RestartDevice));
    EXPECT_FALSE(module.isServiceAlreadyRegistered(0, RestartDevice));
    EXPECT_FALSE(module.registerService(8, DigitalIn));
    EXPECT_FALSE(module.registerService(-1, DigitalOut));
    EXPECT_TRUE(recorder.logs().empty());
}
