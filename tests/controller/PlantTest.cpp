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
#include "vplc/Plant.h"
#include "vplc/PlcDomain.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Fault;
using vplc::Module;
using vplc::Plant;

namespace {

PlcOperation lastOperation = PlcOperation_None;

void onStart(PlcOperation operation) {
    lastOperation = operation;
}
void onAnything(PlcOperation) {
    lastOperation = PlcOperation_None;
}

}  // namespace

TEST(Plant, OnlyOnePlantLivesAtATime) {
    auto plant = Plant::of({Module::DI8_DO8});

    EXPECT_THROW(Plant::of({Module::AI2_AO2}), std::logic_error);
    EXPECT_EQ(plant.modules(), (std::vector<Module>{Module::DI8_DO8}));
}

TEST(Plant, ADestroyedPlantMakesRoomForANewOne) {
    { auto first = Plant::of({Module::DI8_DO8}); }

    auto second = Plant::of({Module::AI2_AO2});

    EXPECT_EQ(second.modules(), (std::vector<Module>{Module::AI2_AO2}));
}

TEST(Plant, AMovedPlantStaysInstalled) {
    std::optional<Plant> moved;
    {
        auto plant = Plant::builder().module(Module::DI8_DO8).build();
        moved.emplace(std::move(plant));
    }
    moved->setDigitalInputs(1, 0x3C);

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(moved->inputsInGds(1), (std::vector<uint8_t>{0x3C}));
}

TEST(Plant, WithTheLastPlantGoneTheBusStopsRunning) {
    { auto plant = Plant::of({Module::DI8_DO8}); }

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(), "No Axioline bus is running");
}

TEST(Plant, APlantBuiltWhileAnotherHeldAHandleDoesNotCountThatHandle) {
    std::optional<Plant> first(Plant::of({Module::DI8_DO8}));
    acquire("1:IN");
    first.reset();

    auto second = Plant::of({Module::DI8_DO8});

    EXPECT_EQ(second.buffersHeld(), 0);
}

TEST(PlcDomain, TheRegisteredHandlerIsRetrievable) {
    ArpPlcDomain_SetHandler(onStart);

    EXPECT_EQ(vplc::plcOperationHandler(), &onStart);
}

TEST(PlcDomain, AHandlerIsRegisteredWithoutAPlant) {
    std::thread registering([] { ArpPlcDomain_SetHandler(onAnything); });
    registering.join();

    EXPECT_EQ(vplc::plcOperationHandler(), &onAnything);
}

TEST(PlcDomain, AFailedRegistrationKeepsTheHandlerBefore) {
    auto plant = Plant::of({});
    ArpPlcDomain_SetHandler(onStart);
    plant.inject("ArpPlcDomain_SetHandler", Fault::next("Domain not ready"));

    ArpPlcDomain_SetHandler(onAnything);

    EXPECT_EQ(vplc::plcOperationHandler(), &onStart);
    EXPECT_EQ(lastError(), "Domain not ready");
    EXPECT_EQ(plant.calls("ArpPlcDomain_SetHandler"), 2);
}

TEST(Plant, TheInputCopyHookSetsInputsThatTheSameCopyDelivers) {
    auto plant = Plant::of({Module::AI2_AO2});
    int calls = 0;
    plant.onInputCopy(
        [&plant, &calls] { plant.setAnalogInput(1, 1, static_cast<uint16_t>(++calls)); });

    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));

    EXPECT_EQ(calls, 2);
    EXPECT_EQ(plant.inputsInGds(1), (std::vector<uint8_t>{0, 0, 0, 2}));
    EXPECT_EQ(plant.inputsOnBus(1), (std::vector<uint8_t>{0, 0, 0, 2}));
    EXPECT_TRUE(ArpPlcAxio_WriteFromGdsToAxio(0));
    EXPECT_EQ(calls, 2);
}

// The plant's writes and the scan's copies exclude each other on the controller's lock; under
// ThreadSanitizer a lapse is a reported race on the bus's input byte.
TEST(Plant, InputsSetWhileAnotherThreadScansReachTheFrameLastValueLast) {
    auto plant = Plant::of({Module::DI8_DO8});
    constexpr int kRounds = 2000;
    std::thread scan([] {
        for (int round = 0; round < kRounds; ++round) {
            ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
        }
    });
    for (int round = 0; round < kRounds; ++round) {
        plant.setDigitalInputs(1, static_cast<uint8_t>(round));
    }
    scan.join();
    ASSERT_TRUE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(plant.inputsInGds(1), std::vector<uint8_t>{static_cast<uint8_t>(kRounds - 1)});
}
