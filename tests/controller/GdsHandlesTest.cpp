// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <optional>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "GdsAccess.h"
#include "vplc/Station.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Module;
using vplc::Station;

TEST(GdsHandles, EveryAcquisitionHandsOutADistinctHandle) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* first = acquire("1:IN");
    TGdsBuffer* second = acquire("1:IN");

    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    EXPECT_TRUE(ArpPlcIo_ReleaseGdsBuffer(second));
    EXPECT_TRUE(ArpPlcIo_ReleaseGdsBuffer(first));
}

TEST(GdsHandles, BuffersHeldCountsAcquisitionsNotYetReleased) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* in = acquire("1:IN");
    TGdsBuffer* out = acquire("1:OUT");
    EXPECT_EQ(station.buffersHeld(), 2);

    ArpPlcIo_ReleaseGdsBuffer(in);
    EXPECT_EQ(station.buffersHeld(), 1);
    ArpPlcIo_ReleaseGdsBuffer(out);
    EXPECT_EQ(station.buffersHeld(), 0);
}

TEST(GdsHandles, ASecondReleaseFailsAndCountsNothing) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* in = acquire("1:IN");
    ASSERT_TRUE(ArpPlcIo_ReleaseGdsBuffer(in));

    EXPECT_FALSE(ArpPlcIo_ReleaseGdsBuffer(in));
    EXPECT_EQ(lastError(), "GDS buffer '1:IN' has been released");
    EXPECT_EQ(station.buffersHeld(), 0);
}

TEST(GdsHandles, ANullOrUnknownHandleFailsToRelease) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* in = acquire("1:IN");

    EXPECT_FALSE(ArpPlcIo_ReleaseGdsBuffer(nullptr));
    EXPECT_EQ(lastError(), "ArpPlcIo_ReleaseGdsBuffer: pBuffer is null");
    EXPECT_FALSE(ArpPlcIo_ReleaseGdsBuffer(reinterpret_cast<TGdsBuffer*>(&station)));
    EXPECT_EQ(lastError(), "ArpPlcIo_ReleaseGdsBuffer: unknown GDS buffer handle");
    EXPECT_EQ(station.buffersHeld(), 1);
    ArpPlcIo_ReleaseGdsBuffer(in);
}

TEST(GdsHandles, EveryCallOnAReleasedHandleFails) {
    auto station = Station::of({Module::DI8_DO8});
    TGdsBuffer* out = acquire("1:OUT");
    ArpPlcIo_ReleaseGdsBuffer(out);
    std::size_t offset = 0;
    char* data = nullptr;

    EXPECT_FALSE(ArpPlcGds_GetVariableOffset(out, "Arp.Io.AxlC/0.~DO8", &offset));
    EXPECT_EQ(lastError(), "GDS buffer '1:OUT' has been released");
    EXPECT_FALSE(ArpPlcGds_BeginWrite(out, &data));
    EXPECT_EQ(lastError(), "GDS buffer '1:OUT' has been released");
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(station.openLocks(), 0);
}

TEST(GdsHandles, AHandleOutlivesItsStationAndIsThenRefused) {
    std::optional<Station> first(Station::of({Module::DI8_DO8}));
    TGdsBuffer* in = acquire("1:IN");
    first.reset();
    char* data = nullptr;

    EXPECT_FALSE(ArpPlcGds_BeginRead(in, &data));
    EXPECT_EQ(lastError(), "No Axioline bus is running");

    auto second = Station::of({Module::DI8_DO8});
    EXPECT_FALSE(ArpPlcGds_BeginRead(in, &data));
    EXPECT_EQ(lastError(),
              "GDS buffer '1:IN' belongs to an Axioline bus that is no longer running");
    EXPECT_FALSE(ArpPlcIo_ReleaseGdsBuffer(in));
    EXPECT_EQ(lastError(),
              "GDS buffer '1:IN' belongs to an Axioline bus that is no longer running");
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(second.buffersHeld(), 0);
}
