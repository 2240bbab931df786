// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "HostRecords.h"
#include "SI_base.h"
#include "hosting/DriverConfig.h"
#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"
#include "orbel/Recorder.h"
#include "vplc/Plant.h"
#include "vplc/VirtualClock.h"

using hosting::DriverConfig;
using namespace std::chrono_literals;

namespace {

using CreateSiObjectFunction = CSI_base* (*)(stSP_Params_t, std::map<unsigned, stMappingElem_t>*,
                                             std::map<unsigned, stServiceParams_t>*);

// The driver library as a host loads it: by path, and only through its factory. Like a host, the
// test never unloads it: the library stays attached to the runtime for the life of the process.
class LoadedDriverLibrary : public ::testing::Test {
protected:
    void SetUp() override {
        library_ = dlopen(PLCNEXT_DRIVER_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library_, nullptr) << dlerror();
        create_ = reinterpret_cast<CreateSiObjectFunction>(dlsym(library_, "CreateSiObject"));
        ASSERT_NE(create_, nullptr) << dlerror();
    }

    CSI_base* create(DriverConfig config) {
        orbel::CallScope creation(nullptr);
        return create_(config.params, &config.mappings, &config.services);
    }

    void* library_ = nullptr;
    CreateSiObjectFunction create_ = nullptr;
};

std::vector<uint8_t> floatBytes(float value) {
    std::vector<uint8_t> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

}  // namespace

TEST_F(LoadedDriverLibrary, OffersTheFactoryAndTheRuntimeEntryButNothingOfItsInside) {
    EXPECT_NE(dlsym(library_, "ArpSystemModule_Load"), nullptr);
    EXPECT_EQ(dlsym(library_, "_Z10from_ib_ilt"), nullptr);
    EXPECT_EQ(dlsym(library_, "_ZN8CPLCNext10initializeEv"), nullptr);
    EXPECT_EQ(dlsym(library_,
                    "_ZN3gds13IOFrameBufferC1ERKNSt7__cxx1112basic_stringIcSt11char_"
                    "traitsIcESaIcEEE"),
              nullptr);
}

TEST_F(LoadedDriverLibrary, ADriverMadeThroughTheFactoryServesTheDigitalModule) {
    orbel::Recorder recorder;
    vplc::VirtualClock clock;
    auto plant = vplc::Plant::of({vplc::Module::DI8_DO8});
    plant.setDigitalInputs(1, 0x08);

    CSI_base* driver = create(
        DriverConfig::digital().serviceName("IO9").digitalIn(10, "3").digitalOut(20, "6", "0"));
    ASSERT_NE(driver, nullptr);
    {
        orbel::CallScope scope(driver);
        driver->initialize();
    }
    clock.settle();

    uint8_t on = 1;
    stEventParams_t event;
    event.pData = &on;
    event.nId = 20;
    event.nSize = 1;
    driver->receiveEvent(event);
    EXPECT_EQ(plant.digitalOutputsOnBus(1), 0x40);

    plant.setDigitalInput(1, 3, false);
    clock.runFor(150ms);

    const auto published = recorder.published(driver);
    ASSERT_EQ(published.size(), 2u);
    EXPECT_EQ(published[0].id, 10u);
    EXPECT_EQ(published[0].bytes, std::vector<uint8_t>{1});
    EXPECT_EQ(published[1].bytes, std::vector<uint8_t>{0});
    const auto logs = recorder.logs(driver);
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].text, "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO9]");
    EXPECT_TRUE(recorder.stops().empty());

    orbel::destroyDriver(driver);
    EXPECT_EQ(plant.buffersHeld(), 0);
}

TEST_F(LoadedDriverLibrary, ADriverMadeThroughTheFactoryServesTheAnalogModule) {
    orbel::Recorder recorder;
    vplc::VirtualClock clock;
    auto plant = vplc::Plant::of({vplc::Module::AI2_AO2});
    plant.setAnalogInput(1, 1, 15000);

    CSI_base* driver = create(DriverConfig::analog().analogIn(11, "1").analogOut(21, "0", "1"));
    driver->initialize();
    clock.settle();
    EXPECT_EQ(plant.analogOutputOnBus(1, 0), 3000);

    float value = 10.0f;
    stEventParams_t event;
    event.pData = reinterpret_cast<uint8_t*>(&value);
    event.nId = 21;
    event.nSize = sizeof value;
    driver->receiveEvent(event);
    EXPECT_EQ(plant.analogOutputOnBus(1, 0), 30000);

    const auto published = recorder.published(driver);
    ASSERT_EQ(published.size(), 1u);
    EXPECT_EQ(published[0].bytes, floatBytes(5.0f));

    orbel::destroyDriver(driver);
}

TEST_F(LoadedDriverLibrary, ARefusedConfigurationIsReportedToTheHost) {
    orbel::Recorder recorder;
    auto plant = vplc::Plant::of({vplc::Module::DI8_DO8});

    CSI_base* driver = create(DriverConfig::digital().service(1, "Counter", 1));
    driver->initialize();

    const auto stops = recorder.stops(driver);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(stops[0].message, "Unsupported service type.");
    delete driver;
    EXPECT_EQ(plant.buffersHeld(), 0);
}

TEST_F(LoadedDriverLibrary, TheFactorysNumberErrorsReachTheHost) {
    try {
        create(DriverConfig::digital().param("Consecutive Number", "none"));
        FAIL() << "nothing thrown";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "stoi");
    }
}
