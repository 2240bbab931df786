// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "FakeScanner.h"
#include "vplc/HostHooks.h"
#include "vplc/Station.h"

using clocktest::FakeScanner;
using vplc::Module;
using vplc::Station;

// Linking the clock room is all a program does: the controller then asks the host and the clock.
TEST(ControllerHooks, TheClockRoomInstallsBothHooksWhenItIsLoaded) {
    const vplc::ScanStartHook scanStart = vplc::setScanStartHook(nullptr);
    vplc::setScanStartHook(scanStart);
    const vplc::RunningDriverThreadsHook running = vplc::setRunningDriverThreadsHook(nullptr);
    vplc::setRunningDriverThreadsHook(running);

    EXPECT_NE(scanStart, nullptr);
    EXPECT_NE(running, nullptr);
}

// A running driver thread may be inside the hook, or about to call it: changing it then would
// free what the thread runs, so the change is refused and the hook stays.
TEST(Station, TheInputCopyHookCannotChangeWhileADriverThreadRuns) {
    using namespace std::chrono_literals;
    auto station = Station::of({Module::DI8_DO8});
    std::atomic<int> calls{0};
    station.onInputCopy([&calls] { ++calls; });
    {
        FakeScanner scanner(0, 100ms);
        scanner.initialize();

        EXPECT_THAT([&station] { station.onInputCopy(nullptr); },
                    ::testing::ThrowsMessage<std::logic_error>(
                        ::testing::HasSubstr("1 driver thread is running and may be calling the "
                                             "input-copy hook")));
    }
    const int before = calls.load();

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(calls.load(), before + 1);
    station.onInputCopy(nullptr);
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(calls.load(), before + 1);
}
