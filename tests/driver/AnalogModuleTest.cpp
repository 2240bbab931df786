// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "hosting/LoggedLine.h"
#include "modules/AXL_F_AI2_AO2.h"
#include "modules/IbIlConversion.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

using hosting::LoggedLine;
using hosting::loggedLines;

namespace {

std::vector<uint8_t> bytes(std::initializer_list<uint8_t> values) {
    return values;
}

size_t offsetOf(const vplc::Station& station, const std::string& name) {
    const auto offset = station.variableOffset(name);
    EXPECT_TRUE(offset.has_value()) << name;
    return offset.value_or(0);
}

}  // namespace

TEST(AnalogModule, TheBytes0x75And0x30AtChannel0ReadAs30000) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, offsetOf(station, "Arp.Io.AxlC/0.~AI32"), {0x75, 0x30});
    AXL_F_AI2_AO2 module(1);

    EXPECT_EQ(module.readAnalog(0), 30000);
    EXPECT_EQ(from_ib_il(module.readAnalog(0)), 10.0f);
}

TEST(AnalogModule, Channel1IsReadFromTheWordAfterChannel0) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, offsetOf(station, "Arp.Io.AxlC/0.~AI32"),
                          {0x00, 0x01, 0x3A, 0x98});
    AXL_F_AI2_AO2 module(1);

    EXPECT_EQ(module.readAnalog(1), 15000);
    EXPECT_EQ(module.readAnalog(0), 1);
}

TEST(AnalogModule, Writing15000ToChannel1StoresTheBytes0x3AAnd0x98AfterChannel0) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    module.writeAnalog(1, 15000);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x00, 0x00, 0x3A, 0x98}));
    const size_t channel0 = offsetOf(station, "Arp.Io.AxlC/0.~AQ32");
    const auto frame = station.frameBytes(vplc::Frame::Out);
    ASSERT_GE(frame.size(), channel0 + 4);
    EXPECT_EQ(frame[channel0 + 2], 0x3A);
    EXPECT_EQ(frame[channel0 + 3], 0x98);
}

TEST(AnalogModule, EachChannelIsWrittenOnItsOwn) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    module.writeAnalog(0, 0x1234);
    module.writeAnalog(1, 0xABCD);
    module.writeAnalog(0, 0x0102);

    EXPECT_EQ(station.outputsInGds(1), bytes({0x01, 0x02, 0xAB, 0xCD}));
}

TEST(AnalogModule, TheModuleAtPosition2UsesItsOwnWords) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, offsetOf(station, "Arp.Io.AxlC/1.~AI32"), {0x0B, 0xB8});
    AXL_F_AI2_AO2 module(2);

    module.writeAnalog(0, 3000);

    EXPECT_EQ(module.readAnalog(0), 3000);
    EXPECT_EQ(station.outputsInGds(2), bytes({0x0B, 0xB8, 0x00, 0x00}));
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00}));
}

TEST(AnalogModule, Channel2AndMinus1AreNeitherReadNorWrittenAndNothingIsLogged) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;

    EXPECT_EQ(module.readAnalog(2), 0);
    EXPECT_EQ(module.readAnalog(-1), 0);
    module.writeAnalog(-1, 5);
    module.writeAnalog(2, 5);

    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00, 0x00, 0x00, 0x00}));
    EXPECT_TRUE(recorder.logs().empty());
}

TEST(AnalogModule, DigitalOperationsReadZeroAndWriteNothing) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    EXPECT_EQ(module.readDigital(0), 0);
    module.writeDigital(0, 1);

    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST(AnalogModule, AFailedBeginReadLogsCallsEndReadAndReadsZero) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, offsetOf(station, "Arp.Io.AxlC/0.~AI32"), {0x75, 0x30});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_BeginRead", vplc::Fault::next("no data"));

    EXPECT_EQ(module.readAnalog(0), 0);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{{2, "Can't begin read: %s", "Can't begin read: no data"}}));
    EXPECT_EQ(station.calls("ArpPlcGds_EndRead"), 1);
}

TEST(AnalogModule, AFailedEndReadIsLoggedAndTheWordIsStillReturned) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, offsetOf(station, "Arp.Io.AxlC/0.~AI32"), {0x75, 0x30});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_EndRead", vplc::Fault::next("cannot unlock"));

    EXPECT_EQ(module.readAnalog(0), 30000);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't unlock buffer: %s", "Can't unlock buffer: cannot unlock"}}));
    module.readAnalog(0);
    EXPECT_EQ(station.openLocks(), 0);
}

TEST(AnalogModule, AFailedBeginWriteLogsStillCallsEndWriteAndLeavesTheOldWord) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);
    module.writeAnalog(0, 0x0102);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_BeginWrite", vplc::Fault::next("frame is busy"));

    module.writeAnalog(0, 0x0304);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't begin write: %s", "Can't begin write: frame is busy"}}));
    EXPECT_EQ(station.calls("ArpPlcGds_EndWrite"), 2);
    EXPECT_EQ(station.outputsInGds(1), bytes({0x01, 0x02, 0x00, 0x00}));
}

TEST(AnalogModule, AFailedEndWriteIsLoggedAfterTheWordWasStored) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;
    station.inject("ArpPlcGds_EndWrite", vplc::Fault::next("cannot unlock"));

    module.writeAnalog(1, 0x0506);

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't unlock buffer: %s", "Can't unlock buffer: cannot unlock"}}));
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00, 0x00, 0x05, 0x06}));
    module.writeAnalog(1, 0x0506);
    EXPECT_EQ(station.openLocks(), 0);
}

TEST(AnalogModule, UnknownPortsAreLoggedOncePerLookupAndNeverReadOrWritten) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    orbel::Recorder recorder;

    AXL_F_AI2_AO2 module(2);
    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{
                  {2, "Can't get offset to port: %s",
                   "Can't get offset to port: Variable 'Arp.Io.AxlC/1.~AI32' does not exist in "
                   "buffer '1:IN'"},
                  {2, "Can't get offset to port: %s",
                   "Can't get offset to port: Variable 'Arp.Io.AxlC/1.~AQ32' does not exist in "
                   "buffer '1:OUT'"}}));

    EXPECT_EQ(module.readAnalog(0), 0);
    EXPECT_EQ(module.readAnalog(1), 0);
    module.writeAnalog(0, 1);
    module.writeAnalog(1, 1);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(station.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST(AnalogModule, SupportsAnalogInputsAnalogOutputsAndRestartOnly) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    EXPECT_TRUE(module.isServiceTypeSupported(AnalogIn));
    EXPECT_TRUE(module.isServiceTypeSupported(AnalogOut));
    EXPECT_FALSE(module.isServiceTypeSupported(DigitalIn));
    EXPECT_FALSE(module.isServiceTypeSupported(DigitalOut));
    EXPECT_TRUE(module.isServiceTypeSupported(RestartDevice));
    EXPECT_FALSE(module.isServiceTypeSupported(Unsupported));
    EXPECT_FALSE(module.isServiceTypeSupported(static_cast<ServiceType>(-1)));
}

TEST(AnalogModule, Pins0And1AreAvailableAndPin2AndMinus1AreNot) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    EXPECT_TRUE(module.isServiceAvailable(0, AnalogIn));
    EXPECT_TRUE(module.isServiceAvailable(1, AnalogOut));
    for (ServiceType type : {AnalogIn, AnalogOut, DigitalIn, DigitalOut, RestartDevice}) {
        EXPECT_FALSE(module.isServiceAvailable(2, type)) << "type " << type;
        EXPECT_FALSE(module.isServiceAvailable(-1, type)) << "type " << type;
    }
    EXPECT_FALSE(module.isServiceAvailable(0, DigitalIn));
}

TEST(AnalogModule, TheValidRangeIs0To1ForItsKindsAndEmptyForOthers) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    EXPECT_EQ(module.getValidRange(AnalogOut), "0 - 1");
    EXPECT_EQ(module.getValidRange(RestartDevice), "0 - 1");
    EXPECT_EQ(module.getValidRange(DigitalIn), "");
}

TEST(AnalogModule, RegisteringTheSamePinTwiceSucceedsOnlyTheFirstTime) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);

    EXPECT_FALSE(module.isServiceAlreadyRegistered(1, AnalogIn));
    EXPECT_TRUE(module.registerService(1, AnalogIn));
    EXPECT_TRUE(module.isServiceAlreadyRegistered(1, AnalogIn));
    EXPECT_FALSE(module.registerService(1, AnalogIn));
    EXPECT_TRUE(module.registerService(1, AnalogOut));
}

TEST(AnalogModule, RegisteringPin2LogsTheServiceAsNotAvailableAndFails) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;

    EXPECT_FALSE(module.registerService(2, AnalogIn));

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{{2, "Service %d not available for AIAO Module",
                                        "Service 0 not available for AIAO Module"}}));
}

TEST(AnalogModule, AnUnavailablePinCountsAsTakenWithALogLine) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;

    EXPECT_TRUE(module.isServiceAlreadyRegistered(0, DigitalOut));

    EXPECT_EQ(loggedLines(recorder),
              (std::vector<LoggedLine>{{2, "Service %d not available for AIAO Module",
                                        "Service 3 not available for AIAO Module"}}));
}

TEST(AnalogModule, RestartCountsAsTakenAndCannotBeRegisteredWithoutALogLine) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    AXL_F_AI2_AO2 module(1);
    orbel::Recorder recorder;

    EXPECT_TRUE(module.isServiceAlreadyRegistered(0, RestartDevice));
    EXPECT_FALSE(module.registerService(0, RestartDevice));

    EXPECT_TRUE(recorder.logs().empty());
}
