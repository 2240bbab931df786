// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "GdsAccess.h"
#include "vplc/PlcDomain.h"
#include "vplc/Station.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Fault;
using vplc::Module;
using vplc::Station;

namespace {

PlcOperation lastOperation = PlcOperation_None;

void onStart(PlcOperation operation) {
    lastOperation = operation;
}
void onAnything(PlcOperation) {
    lastOperation = PlcOperation_None;
}

}  // namespace

TEST(Station, OnlyOneStationLivesAtATime) {
    auto station = Station::of({Module::DI8_DO8});

    EXPECT_THROW(Station::of({Module::AI2_AO2}), std::logic_error);
    EXPECT_EQ(station.modules(), (std::vector<Module>{Module::DI8_DO8}));
}

TEST(Station, ADestroyedStationMakesRoomForANewOne) {
    { auto first = Station::of({Module::DI8_DO8}); }

    auto second = Station::of({Module::AI2_AO2});

    EXPECT_EQ(second.modules(), (std::vector<Module>{Module::AI2_AO2}));
}

TEST(Station, AMovedStationStaysInstalled) {
    std::optional<Station> moved;
    {
        auto station = Station::builder().module(Module::DI8_DO8).build();
        moved.emplace(std::move(station));
    }
    moved->setDigitalInputs(1, 0x3C);

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(moved->inputsInGds(1), (std::vector<uint8_t>{0x3C}));
}

TEST(Station, WithTheLastStationGoneTheBusStopsRunning) {
    { auto station = Station::of({Module::DI8_DO8}); }

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(), "No Axioline bus is running");
}

TEST(Station, AStationBuiltWhileAnotherHeldAHandleDoesNotCountThatHandle) {
    std::optional<Station> first(Station::of({Module::DI8_DO8}));
    acquire("1:IN");
    first.reset();

    auto second = Station::of({Module::DI8_DO8});

    EXPECT_EQ(second.buffersHeld(), 0);
}

TEST(PlcDomain, TheRegisteredHandlerIsRetrievable) {
    ArpPlcDomain_SetHandler(onStart);

    EXPECT_EQ(vplc::plcOperationHandler(), &onStart);
}

TEST(PlcDomain, AHandlerIsRegisteredWithoutAStation) {
    std::thread registering([] { ArpPlcDomain_SetHandler(onAnything); });
    registering.join();

    EXPECT_EQ(vplc::plcOperationHandler(), &onAnything);
}

TEST(PlcDomain, AFailedRegistrationKeepsTheHandlerBefore) {
    auto station = Station::of({});
    ArpPlcDomain_SetHandler(onStart);
    station.inject("ArpPlcDomain_SetHandler", Fault::next("Domain not ready"));

    ArpPlcDomain_SetHandler(onAnything);

    EXPECT_EQ(vplc::plcOperationHandler(), &onStart);
    EXPECT_EQ(lastError(), "Domain not ready");
    EXPECT_EQ(station.calls("ArpPlcDomain_SetHandler"), 2);
}

TEST(Station, TheInputCopyHookSetsInputsThatTheSameCopyDelivers) {
    auto station = Station::of({Module::AI2_AO2});
    int calls = 0;
    station.onInputCopy(
        [&station, &calls] { station.setAnalogInput(1, 1, static_cast<uint16_t>(++calls)); });

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(calls, 2);
    EXPECT_EQ(station.inputsInGds(1), (std::vector<uint8_t>{0, 0, 0, 2}));
    EXPECT_EQ(station.inputsOnBus(1), (std::vector<uint8_t>{0, 0, 0, 2}));
    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_EQ(calls, 2);
}

// The station's writes and the scan's copies exclude each other on the controller's lock; under
// ThreadSanitizer a lapse is a reported race on the bus's input byte.
TEST(Station, InputsSetWhileAnotherThreadScansReachTheFrameLastValueLast) {
    auto station = Station::of({Module::DI8_DO8});
    constexpr int kRounds = 2000;
    std::thread scan([] {
        for (int round = 0; round < kRounds; ++round) {
            ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
        }
    });
    for (int round = 0; round < kRounds; ++round) {
        station.setDigitalInputs(1, static_cast<uint8_t>(round));
    }
    scan.join();
    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(station.inputsInGds(1), std::vector<uint8_t>{static_cast<uint8_t>(kRounds - 1)});
}
