// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExposedDriverTest.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "orbel/StopFlag.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using hosting::DriverPtr;
namespace host = hosting::host;
using hosting::DriverConfig;
using hosting::DriverRig;
using testsupport::ExposedDriver;

namespace {

// Driver threads wait at the scan gate, so that the tables and the frames stay as initialize()
// left them.
class DriverInitialisation : public drivertest::ExposedDriverTest {
protected:
    DriverInitialisation() { clock_.holdScans(true); }

    // Initialises the driver and waits until its thread, if it started one, is at the gate.
    void initialize(CSI_base& driver) {
        host::initialize(driver);
        clock_.settle();
    }

    DriverPtr<ExposedDriver> make(const DriverConfig& config) {
        return DriverPtr<ExposedDriver>(new ExposedDriver(config));
    }
};

}  // namespace

TEST_F(DriverInitialisation, AnEmptyServiceTableCreatesTheModuleCopiesTheImagesAndStartsTheThread) {
    auto driver = make(DriverConfig::digital());

    initialize(*driver);

    EXPECT_NE(driver->module(), nullptr);
    EXPECT_EQ(station_.buffersHeld(), 2);
    EXPECT_EQ(station_.calls("ArpPlcAxio_ReadFromAxioToGds"), 1);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 1);
    EXPECT_EQ(recorder_.threadStarts(driver.get()).size(), 1u);
    EXPECT_TRUE(recorder_.stops().empty());
    EXPECT_EQ(clock_.heldThreads(), 1);
}

TEST_F(DriverInitialisation, TheInitialOutputValuesReachTheBusWhenInitialisationEnds) {
    auto driver = make(DriverConfig::digital().digitalOut(20, "2", "1").digitalOut(21, "5", "1"));

    initialize(*driver);

    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x24);
}

TEST_F(DriverInitialisation, TheAnalogModuleIsCreatedForItsDeviceType) {
    auto driver = make(DriverConfig::analog(2).analogOut(20, "1", "10"));

    initialize(*driver);

    EXPECT_EQ(station_.analogOutputOnBus(2, 1), 30000);
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(DriverInitialisation, AnUnsupportedFirstServiceStopsTheDriverBeforeTheSecondIsLookedAt) {
    auto driver = make(DriverConfig::digital().analogIn(1, "0").digitalIn(2, "0"));

    initialize(*driver);

    const auto stops = recorder_.stops(driver.get());
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_TRUE(stops[0].hasService);
    EXPECT_EQ(stops[0].service.nEventId, 1u);
    EXPECT_EQ(stops[0].service.sServiceType, "AnalogIn");
    EXPECT_EQ(stops[0].message, "Unsupported service type.");
    EXPECT_TRUE(driver->digitalInputs().empty());
    EXPECT_TRUE(driver->analogInputs().empty());
    EXPECT_FALSE(driver->module()->isServiceAlreadyRegistered(0, DigitalIn));
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
    EXPECT_TRUE(recorder_.threadStarts().empty());
    EXPECT_TRUE(recorder_.logs(driver.get()).empty());
}

TEST_F(DriverInitialisation, AServiceTextThatNamesNoKindIsAnUnsupportedServiceType) {
    auto driver = make(DriverConfig::digital().service(1, "digitalin", 1, {{"PinNum", "0"}}));

    initialize(*driver);

    const auto stops = recorder_.stops(driver.get());
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(stops[0].message, "Unsupported service type.");
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

TEST_F(DriverInitialisation, RestartServicesAreKeptInTheOrderOfTheServiceTable) {
    auto driver = make(DriverConfig::digital().restart(50).digitalIn(40, "1").restart(30));

    initialize(*driver);

    EXPECT_EQ(driver->restartEventIds(), (std::list<unsigned>{30, 50}));
    EXPECT_EQ(driver->digitalInputs().size(), 1u);
    EXPECT_EQ(recorder_.threadStarts().size(), 1u);
}

TEST_F(DriverInitialisation, TheAnalogModuleAlsoAcceptsRestartServices) {
    auto driver = make(DriverConfig::analog(2).restart(7));

    initialize(*driver);

    EXPECT_EQ(driver->restartEventIds(), (std::list<unsigned>{7}));
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(DriverInitialisation, ARefusalOfTheThirdOfFiveServicesKeepsTheFirstTwoAndStartsNothing) {
    auto driver = make(DriverConfig::digital()
                           .digitalIn(1, "0")
                           .digitalIn(2, "1")
                           .digitalIn(3, "9")
                           .digitalIn(4, "2")
                           .digitalOut(5, "3", "1"));

    initialize(*driver);

    ASSERT_EQ(recorder_.stops(driver.get()).size(), 1u);
    EXPECT_EQ(recorder_.stops(driver.get())[0].message, "Invalid digital input number.");
    EXPECT_EQ(driver->digitalInputs().size(), 2u);
    EXPECT_EQ(driver->digitalInputs().count(0), 1u);
    EXPECT_EQ(driver->digitalInputs().count(1), 1u);
    EXPECT_TRUE(driver->outputs().empty());
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

TEST_F(DriverInitialisation, AStopFlagSetBeforeInitialisationStillLetsTheFirstServiceBeHandled) {
    auto driver = make(DriverConfig::digital().digitalIn(1, "0").digitalIn(2, "1"));
    driver->stopWithError("earlier trouble");

    initialize(*driver);

    EXPECT_EQ(driver->digitalInputs().size(), 1u);
    EXPECT_EQ(driver->digitalInputs().count(0), 1u);
    EXPECT_EQ(recorder_.stops(driver.get()).size(), 1u);
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

// A host whose stopWithError reports the stop and leaves the driver's stop flag alone.
class DriverInitialisationOnAHostThatLeavesTheStopFlag : public DriverInitialisation {
protected:
    DriverInitialisationOnAHostThatLeavesTheStopFlag() { orbel::setStopSetsStopFlag(false); }
    ~DriverInitialisationOnAHostThatLeavesTheStopFlag() override {
        orbel::setStopSetsStopFlag(true);
    }
};

TEST_F(DriverInitialisationOnAHostThatLeavesTheStopFlag, ARefusedPinServiceIsFollowedByTheNext) {
    auto driver = make(DriverConfig::digital()
                           .digitalIn(1, "0")
                           .digitalIn(2, "9")
                           .digitalOut(3, "0", "1")
                           .digitalOut(4, "0", "0")
                           .digitalIn(5, "1"));

    initialize(*driver);

    std::vector<std::string> messages;
    for (const auto& stop : recorder_.stops(driver.get())) {
        messages.push_back(stop.message);
    }
    EXPECT_EQ(messages,
              (std::vector<std::string>{"Invalid digital input number.", "Pin already in use."}));
    EXPECT_FALSE(driver->stopped());
    EXPECT_EQ(driver->digitalInputs().size(), 2u);
    EXPECT_EQ(driver->digitalInputs().count(1), 1u);
    ASSERT_EQ(driver->outputs().count(0), 1u);
    EXPECT_EQ(driver->outputs().at(0).nEventId, 3u);
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x01);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 1);
    EXPECT_EQ(recorder_.threadStarts(driver.get()).size(), 1u);
}

TEST_F(DriverInitialisationOnAHostThatLeavesTheStopFlag, AnUnsupportedServiceStillEndsTheWalk) {
    auto driver =
        make(DriverConfig::digital().digitalIn(1, "0").analogIn(2, "0").digitalIn(3, "1"));

    initialize(*driver);

    const auto stops = recorder_.stops(driver.get());
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(stops[0].message, "Unsupported service type.");
    EXPECT_EQ(driver->digitalInputs().size(), 1u);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

TEST_F(DriverInitialisation, AnUnknownDeviceTypeWithoutServicesStartsWithoutAModule) {
    auto driver = make(DriverConfig("AXL_F_DI16_1"));

    initialize(*driver);

    EXPECT_EQ(driver->module(), nullptr);
    EXPECT_EQ(station_.buffersHeld(), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 1);
    EXPECT_EQ(recorder_.threadStarts(driver.get()).size(), 1u);
    EXPECT_EQ(clock_.releaseScan(), 1);
    clock_.runFor(std::chrono::milliseconds(250));
    EXPECT_TRUE(recorder_.published().empty());
}

TEST_F(DriverInitialisation, AnUnknownDeviceTypeRefusesItsFirstServiceAsUnsupported) {
    auto driver = make(DriverConfig("axl_f_di8_1_do8_1").restart(3).digitalIn(4, "1"));

    initialize(*driver);

    const auto stops = recorder_.stops(driver.get());
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_EQ(stops[0].service.nEventId, 3u);
    EXPECT_EQ(stops[0].message, "Unsupported service type.");
    EXPECT_EQ(driver->module(), nullptr);
    EXPECT_TRUE(driver->restartEventIds().empty());
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

TEST_F(DriverInitialisation, AnExceptionFromARegistrationLeavesInitialiseAndKeepsEarlierServices) {
    auto driver = make(DriverConfig::digital().digitalIn(1, "4").digitalIn(2, "abc").restart(3));

    EXPECT_THROW(initialize(*driver), std::invalid_argument);

    EXPECT_EQ(driver->digitalInputs().size(), 1u);
    EXPECT_EQ(driver->digitalInputs().count(4), 1u);
    EXPECT_TRUE(driver->restartEventIds().empty());
    EXPECT_TRUE(recorder_.stops().empty());
    EXPECT_TRUE(recorder_.threadStarts().empty());
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
}

TEST_F(DriverInitialisation, ASecondInitialisationMakesASecondModuleAndLeavesTheFirst) {
    auto driver = make(DriverConfig::digital().analogOut(1, "0", "0"));
    initialize(*driver);
    std::unique_ptr<INumberedPinModule> first(driver->module());

    initialize(*driver);

    EXPECT_NE(driver->module(), first.get());
    EXPECT_EQ(station_.buffersHeld(), 4);
    first.reset();
    EXPECT_EQ(station_.buffersHeld(), 2);
}

TEST_F(DriverInitialisation, DestroyingAStoppedDriverReleasesItsModuleAndWritesNothing) {
    auto driver = make(DriverConfig::digital().digitalOut(1, "0", "1").digitalOut(2, "8", "1"));
    initialize(*driver);
    ASSERT_EQ(recorder_.stops().size(), 1u);

    driver.reset();

    EXPECT_EQ(station_.buffersHeld(), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x00);
}

TEST_F(DriverInitialisation, DestroyingARunningDriverReleasesItsModuleAndWritesNothing) {
    auto driver = make(DriverConfig::digital().digitalOut(1, "0", "1"));
    initialize(*driver);
    ASSERT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 1);

    driver.reset();

    EXPECT_EQ(station_.buffersHeld(), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 1);
}

TEST_F(DriverInitialisation, ADigitalOutputWriteChangesOnlyItsModulesOutputByteInTheFrame) {
    auto analog = make(DriverConfig::analog(2).analogOut(30, "0", "10"));
    initialize(*analog);
    auto expected = station_.frameBytes(vplc::Frame::Out);
    // The digital module's output byte follows the 2-byte status word; a byte of padding follows
    // it. A digital input on pin 0 marks that pin taken, right behind the output state in memory.
    expected[2] = 0x02;
    auto digital = make(DriverConfig::digital(1).digitalIn(10, "0").digitalOut(20, "1", "1"));

    initialize(*digital);

    EXPECT_EQ(station_.frameBytes(vplc::Frame::Out), expected);
    EXPECT_EQ(station_.analogOutputOnBus(2, 0), 30000);
}
