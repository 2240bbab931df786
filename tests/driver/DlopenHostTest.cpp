// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include "SI_base.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverLibrary.h"
#include "hosting/DriverRig.h"
#include "hosting/FloatBytes.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using hosting::DriverConfig;
using hosting::DriverRig;
using hosting::floatBytes;
using namespace std::chrono_literals;
namespace host = hosting::host;

namespace {

// The driver library as a host loads it: by path, and only through its factory. Like a host, the
// test never unloads it: the library stays attached to the runtime for the life of the process.
class LoadedDriverLibrary : public ::testing::Test {
protected:
    void SetUp() override {
        try {
            library_ = std::make_unique<hosting::DriverLibrary>(PLCNEXT_DRIVER_PATH);
        } catch (const std::runtime_error& error) {
            FAIL() << error.what();
        }
    }

    std::unique_ptr<hosting::DriverLibrary> library_;
};

}  // namespace

TEST_F(LoadedDriverLibrary, OffersTheFactoryAndTheRuntimeEntryButNothingOfItsInside) {
    EXPECT_NE(library_->symbol("ArpSystemModule_Load"), nullptr);
    EXPECT_EQ(library_->symbol("_Z10from_ib_ilt"), nullptr);
    EXPECT_EQ(library_->symbol("_ZN8CPLCNext10initializeEv"), nullptr);
    EXPECT_EQ(library_->symbol("_ZN3gds13IOFrameBufferC1ERKNSt7__cxx1112basic_stringIcSt11char_"
                               "traitsIcESaIcEEE"),
              nullptr);
}

TEST_F(LoadedDriverLibrary, ADriverMadeThroughTheFactoryServesTheDigitalModule) {
    DriverRig rig({vplc::Module::DI8_DO8});
    auto& recorder = rig.recorder();
    auto& station = rig.station();
    station.setDigitalInputs(1, 0x08);

    CSI_base& owned = rig.create(
        DriverConfig::digital().serviceName("IO9").digitalIn(10, "3").digitalOut(20, "6", "0"),
        library_->factory());
    const CSI_base* driver = &owned;
    host::initialize(owned);
    rig.clock().settle();

    host::deliver(owned, 20, {1});
    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x40);

    station.setDigitalInput(1, 3, false);
    rig.clock().runFor(150ms);

    const auto published = recorder.published(driver);
    ASSERT_EQ(published.size(), 2u);
    EXPECT_EQ(published[0].id, 10u);
    EXPECT_EQ(published[0].bytes, std::vector<uint8_t>{1});
    EXPECT_EQ(published[1].bytes, std::vector<uint8_t>{0});
    const auto logs = recorder.logs(driver);
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].text, "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO9]");
    EXPECT_TRUE(recorder.stops().empty());

    rig.destroy();
    EXPECT_EQ(station.buffersHeld(), 0);
}

TEST_F(LoadedDriverLibrary, ADriverMadeThroughTheFactoryServesTheAnalogModule) {
    DriverRig rig({vplc::Module::AI2_AO2});
    auto& station = rig.station();
    station.setAnalogInput(1, 1, 15000);

    CSI_base& driver = rig.create(DriverConfig::analog().analogIn(11, "1").analogOut(21, "0", "1"),
                                  library_->factory());
    host::initialize(driver);
    rig.clock().settle();
    EXPECT_EQ(station.analogOutputOnBus(1, 0), 3000);

    host::deliver(driver, 21, floatBytes(10.0f));
    EXPECT_EQ(station.analogOutputOnBus(1, 0), 30000);

    const auto published = rig.recorder().published(&driver);
    ASSERT_EQ(published.size(), 1u);
    EXPECT_EQ(published[0].bytes, floatBytes(5.0f));

    rig.destroy();
}

TEST_F(LoadedDriverLibrary, ARefusedConfigurationIsReportedToTheHost) {
    DriverRig rig({vplc::Module::DI8_DO8});

    CSI_base& driver =
        rig.create(DriverConfig::digital().service(1, "Counter", 1), library_->factory());
    host::initialize(driver);

    const auto stops = rig.recorder().stops(&driver);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(stops[0].message, "Unsupported service type.");
    rig.destroy();
    EXPECT_EQ(rig.station().buffersHeld(), 0);
}

TEST_F(LoadedDriverLibrary, TheFactorysNumberErrorsReachTheHost) {
    try {
        host::create(DriverConfig::digital().param("Consecutive Number", "none"),
                     library_->factory());
        FAIL() << "nothing thrown";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "stoi");
    }
}
