// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "modules/AXL_F_AI2_AO2.h"
#include "modules/IbIlConversion.h"
#include "vplc/Station.h"

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

TEST(AnalogModule, TheModuleAtPosition2UsesItsOwnWords) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    station.setFrameBytes(vplc::Frame::In, offsetOf(station, "Arp.Io.AxlC/1.~AI32"), {0x0B, 0xB8});
    AXL_F_AI2_AO2 module(2);

    module.writeAnalog(0, 3000);

    EXPECT_EQ(module.readAnalog(0), 3000);
    EXPECT_EQ(station.outputsInGds(2), bytes({0x0B, 0xB8, 0x00, 0x00}));
    EXPECT_EQ(station.outputsInGds(1), bytes({0x00}));
}
