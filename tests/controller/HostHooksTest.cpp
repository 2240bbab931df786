// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "GdsAccess.h"
#include "vplc/HostHooks.h"
#include "vplc/Station.h"

using controllertest::lastError;
using vplc::Fault;
using vplc::Module;
using vplc::Station;

namespace {

// The hooks are plain functions, so what they see is kept here.
std::vector<std::string> events;
int runningThreads = 0;

void recordScanStart() {
    events.emplace_back("scan start");
}

int countedThreads() {
    return runningThreads;
}

// Installs both hooks for one test and puts back the ones before.
class HostHooks : public ::testing::Test {
protected:
    void SetUp() override {
        events.clear();
        runningThreads = 0;
        scanStartBefore_ = vplc::setScanStartHook(&recordScanStart);
        runningBefore_ = vplc::setRunningDriverThreadsHook(&countedThreads);
    }
    void TearDown() override {
        vplc::setScanStartHook(scanStartBefore_);
        vplc::setRunningDriverThreadsHook(runningBefore_);
    }

private:
    vplc::ScanStartHook scanStartBefore_ = nullptr;
    vplc::RunningDriverThreadsHook runningBefore_ = nullptr;
};

}  // namespace

// The controller knows no host: nothing in it installs a hook.
TEST(HostHooksAlone, TheControllerInstallsNoHookOfItsOwn) {
    EXPECT_EQ(vplc::setScanStartHook(nullptr), nullptr);
    EXPECT_EQ(vplc::setRunningDriverThreadsHook(nullptr), nullptr);
}

TEST(HostHooksAlone, WithoutHooksTheInputCopyHookChangesAtAnyTime) {
    auto station = Station::of({Module::DI8_DO8});
    int calls = 0;
    station.onInputCopy([&calls] { ++calls; });
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    station.onInputCopy(nullptr);
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(calls, 1);
}

TEST_F(HostHooks, SettingAHookHandsBackTheOneItReplaces) {
    EXPECT_EQ(vplc::setScanStartHook(nullptr), &recordScanStart);
    EXPECT_EQ(vplc::setScanStartHook(&recordScanStart), nullptr);
    EXPECT_EQ(vplc::setRunningDriverThreadsHook(nullptr), &countedThreads);
    EXPECT_EQ(vplc::setRunningDriverThreadsHook(&countedThreads), nullptr);
}

TEST_F(HostHooks, TheScanStartHookRunsAtEveryInputCopyBeforeTheStationsHook) {
    auto station = Station::of({Module::DI8_DO8});
    station.onInputCopy([] { events.emplace_back("input copy"); });

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));

    EXPECT_EQ(events,
              (std::vector<std::string>{"scan start", "input copy", "scan start", "input copy"}));
    station.onInputCopy(nullptr);
}

// The gate comes before the call is counted, so a scan held there has not yet called.
TEST_F(HostHooks, TheScanStartHookRunsEvenForACallThatFailsByAFault) {
    auto station = Station::of({Module::DI8_DO8});
    station.inject("ArpPlcAxio_ReadFromAxioToGds", Fault::next("Bus not ready"));

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(events, (std::vector<std::string>{"scan start"}));
    EXPECT_EQ(lastError(), "Bus not ready");
}

TEST_F(HostHooks, TheScanStartHookRunsWithoutABus) {
    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(events, (std::vector<std::string>{"scan start"}));
    EXPECT_EQ(lastError(), "No Axioline bus is running");
}

TEST_F(HostHooks, TheInputCopyHookCannotChangeWhileTheHostCountsRunningDriverThreads) {
    auto station = Station::of({Module::DI8_DO8});
    int calls = 0;
    station.onInputCopy([&calls] { ++calls; });
    runningThreads = 2;

    EXPECT_THAT([&station] { station.onInputCopy(nullptr); },
                ::testing::ThrowsMessage<std::logic_error>(
                    ::testing::HasSubstr("2 driver threads are running and may be calling the "
                                         "input-copy hook")));
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(calls, 1);

    runningThreads = 0;
    station.onInputCopy(nullptr);
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(calls, 1);
}
