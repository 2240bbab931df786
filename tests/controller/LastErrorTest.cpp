// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "Arp/Plc/AnsiC/Gds/ErrorHandling.h"
#include "Arp/Plc/AnsiC/Io/FbIoSystem.h"
#include "GdsAccess.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Station.h"

using controllertest::lastError;
using vplc::Fault;
using vplc::Module;
using vplc::Station;

namespace {

// Makes the next acquisition fail with `text`, so that it becomes the last error.
void failWith(Station& station, const std::string& text) {
    station.inject("ArpPlcIo_GetBufferPtrByBufferID", Fault::next(text));
    TGdsBuffer* handle = nullptr;
    ASSERT_FALSE(ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", "1:IN", &handle));
}

}  // namespace

TEST(LastError, GetLastErrorCopiesTheTextOfTheLastFailure) {
    auto station = Station::of({Module::DI8_DO8});
    failWith(station, "Buffer is busy");
    char text[1024];
    std::memset(text, 'x', sizeof text);

    ArpPlc_GetLastError(text, sizeof text);

    EXPECT_STREQ(text, "Buffer is busy");
}

TEST(LastError, GetLastErrorClearsTheText) {
    auto station = Station::of({Module::DI8_DO8});
    failWith(station, "Buffer is busy");
    lastError();

    EXPECT_EQ(lastError(), "");
}

TEST(LastError, AThreadWithoutAFailureGetsAnEmptyText) {
    char text[16];
    std::memset(text, 'x', sizeof text);

    std::thread fresh([&text] { ArpPlc_GetLastError(text, sizeof text); });
    fresh.join();

    EXPECT_EQ(text[0], '\0');
}

TEST(LastError, A2000CharacterTextIsCutTo1023CharactersInA1024ByteBuffer) {
    auto station = Station::of({Module::DI8_DO8});
    std::string longText;
    for (int i = 0; i < 2000; ++i) {
        longText += static_cast<char>('a' + i % 26);
    }
    failWith(station, longText);
    char text[1024];
    std::memset(text, 'x', sizeof text);

    ArpPlc_GetLastError(text, sizeof text);

    EXPECT_EQ(std::strlen(text), 1023u);
    EXPECT_EQ(std::string(text), longText.substr(0, 1023));
}

TEST(LastError, AOneByteBufferReceivesOnlyTheTerminatingNul) {
    auto station = Station::of({Module::DI8_DO8});
    failWith(station, "Buffer is busy");
    char text[2] = {'x', 'x'};

    ArpPlc_GetLastError(text, 1);

    EXPECT_EQ(text[0], '\0');
    EXPECT_EQ(text[1], 'x');
    EXPECT_EQ(lastError(), "");
}

TEST(LastError, EachThreadHasItsOwnLastError) {
    auto station = Station::of({Module::DI8_DO8});
    failWith(station, "Failed here");
    std::thread failing([&station] { failWith(station, "Failed elsewhere"); });
    failing.join();

    EXPECT_EQ(lastError(), "Failed here");
}

TEST(LastError, AFaultOnGetLastErrorHandsOutTheFaultsText) {
    auto station = Station::of({Module::DI8_DO8});
    failWith(station, "Buffer is busy");
    station.inject("ArpPlc_GetLastError", Fault::next("Error text lost"));

    EXPECT_EQ(lastError(), "Error text lost");
    EXPECT_EQ(lastError(), "");
}

TEST(LastError, SetLastErrorIsHandedOutByGetLastError) {
    vplc::setLastError("Set by the runtime");

    EXPECT_EQ(lastError(), "Set by the runtime");
}
