// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "CombinedModule.h"
#include "ExposedDriverTest.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/FloatBytes.h"
#include "hosting/HostCalls.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "orbel/Recorder.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

using drivertest::combinedModule;
using hosting::DriverPtr;
namespace host = hosting::host;
using drivertest::ExposedDriverTest;
using hosting::DriverConfig;
using hosting::DriverRig;
using hosting::floatBytes;
using testsupport::ExposedDriver;

namespace {

// The digital module, noting every pin write it is given.
class RecordingDigitalModule : public AXL_F_DI8_1_DO8_1 {
public:
    using AXL_F_DI8_1_DO8_1::AXL_F_DI8_1_DO8_1;

    void writeDigital(int pin, unsigned char value) override {
        writes.emplace_back(pin, value);
        AXL_F_DI8_1_DO8_1::writeDigital(pin, value);
    }

    std::vector<std::pair<int, unsigned char>> writes;
};

// Events arrive while the driver's thread waits at the scan gate, so that every platform call
// counted here is the event path's.
class EventReception : public ExposedDriverTest {
protected:
    EventReception() {
        vplc::Runtime::reset();
        clock_.holdScans(true);
    }
    ~EventReception() override {
        driver_.reset();
        vplc::Runtime::reset();
    }

    ExposedDriver& start(const DriverConfig& config, INumberedPinModule* module = nullptr) {
        ExposedDriverTest::start(config, module);
        EXPECT_TRUE(recorder_.stops().empty());
        busCopiesAtStart_ = station_.calls("ArpPlcAxio_WriteFromGdsToAxio");
        return *driver_;
    }

    int busCopies() const {
        return station_.calls("ArpPlcAxio_WriteFromGdsToAxio") - busCopiesAtStart_;
    }

    int busCopiesAtStart_ = 0;
};

}  // namespace

TEST_F(EventReception, ANullPayloadIsReportedOnceAndNothingIsWrittenOrCopied) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "2", "0"));

    host::deliverNull(driver, 20, 1);

    const auto stops = recorder_.stops(&driver);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_FALSE(stops[0].hasService);
    EXPECT_EQ(stops[0].message, "Null data pointer");
    EXPECT_EQ(busCopies(), 0);
    EXPECT_EQ(station_.calls("ArpPlcGds_BeginWrite"), 1);
}

TEST_F(EventReception, ADigitalEventSwitchesItsPinAndCopiesTheOutputsToTheBus) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "2", "0"));

    host::deliver(driver, 20, {1});

    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x04);
    EXPECT_EQ(busCopies(), 1);
    EXPECT_TRUE(recorder_.stops().empty());

    host::deliver(driver, 20, {0});
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x00);
    EXPECT_EQ(busCopies(), 2);
}

TEST_F(EventReception, TwoDigitalOutputsOfOneEventBothReceiveTheByteLowerPinFirst) {
    auto* module = new RecordingDigitalModule(1);
    start(DriverConfig("RECORDING")
              .service(1, "DigitalOut", 20, {{"PinNum", "6"}, {"InitVal", "0"}})
              .service(2, "DigitalOut", 20, {{"PinNum", "2"}, {"InitVal", "0"}})
              .mapping(20, 1),
          module);
    module->writes.clear();

    host::deliver(*driver_, 20, {1});

    EXPECT_EQ(module->writes, (std::vector<std::pair<int, unsigned char>>{{2, 1}, {6, 1}}));
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x44);
    EXPECT_EQ(busCopies(), 1);
}

TEST_F(EventReception, OnlyTheFirstPayloadByteOfADigitalEventIsUsed) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "3", "0"));

    host::deliver(driver, 20, {1, 0xFE, 0xFF});

    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x08);
}

TEST_F(EventReception, AnAnalogEventIsConvertedToItsWordAndWritten) {
    auto& driver = start(DriverConfig::analog(2).analogOut(21, "1", "0"));

    host::deliver(driver, 21, floatBytes(1.23456f));

    EXPECT_EQ(station_.analogOutputOnBus(2, 1), 3703);
    EXPECT_EQ(station_.analogOutputOnBus(2, 0), 0);
    EXPECT_EQ(busCopies(), 1);
}

TEST_F(EventReception, AnAnalogEventAlwaysTakesFourBytesWhateverItsSizeSays) {
    auto& driver = start(DriverConfig::analog(2).analogOut(21, "0", "0"));
    std::vector<uint8_t> payload = floatBytes(10.0f);

    host::deliver(driver, 21, payload, 1);

    EXPECT_EQ(station_.analogOutputOnBus(2, 0), 30000);
}

TEST_F(EventReception, AnEventBoundToAnAnalogAndADigitalPinFeedsEachAsItsKind) {
    start(DriverConfig("COMBINED")
              .service(1, "AnalogOut", 30, {{"PinNum", "1"}, {"InitVal", "0"}})
              .service(2, "DigitalOut", 30, {{"PinNum", "0"}, {"InitVal", "0"}})
              .mapping(30, 4),
          combinedModule(1, 2).release());

    // The digital pin takes the first payload byte, which for 1.0f in the controller's
    // little-endian order is 0x00, so the pin that was switched on goes off.
    host::deliver(*driver_, 30, {0x01, 0x00, 0x00, 0x00});
    ASSERT_EQ(station_.digitalOutputsOnBus(1), 0x01);

    host::deliver(*driver_, 30, floatBytes(1.0f));

    EXPECT_EQ(station_.analogOutputOnBus(2, 1), 3000);
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x00);
    EXPECT_EQ(busCopies(), 2);
}

TEST_F(EventReception, ARestartEventRestartsTheDeviceOnceThenCopiesTheOutputs) {
    auto& driver = start(DriverConfig::digital().restart(30).digitalOut(20, "1", "0"));

    host::deliver(driver, 30, {0});

    EXPECT_EQ(vplc::Runtime::restarts(), 1);
    EXPECT_EQ(busCopies(), 1);
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(EventReception, ARestartIdListedTwiceRestartsOnce) {
    auto& driver = start(
        DriverConfig::digital().service(1, "RestartDevice", 30).service(2, "RestartDevice", 30));
    ASSERT_EQ(driver.restartEventIds().size(), 2u);

    host::deliver(driver, 30, {0});

    EXPECT_EQ(vplc::Runtime::restarts(), 1);
    EXPECT_EQ(busCopies(), 1);
}

TEST_F(EventReception, AnUnknownEventIsReportedAndStillFollowedByOneBusCopy) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "1", "0").restart(30));

    host::deliver(driver, 99, {1});

    const auto stops = recorder_.stops(&driver);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_FALSE(stops[0].hasService);
    EXPECT_EQ(stops[0].message, "Unsubscribed event received");
    EXPECT_EQ(busCopies(), 1);
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x00);
    EXPECT_EQ(vplc::Runtime::restarts(), 0);
}

TEST_F(EventReception, AnIdOfBothAnOutputAndARestartServiceWritesTheOutputAndNeverRestarts) {
    auto& driver =
        start(DriverConfig::digital().digitalOut(40, "1", "0").service(100, "RestartDevice", 40));

    host::deliver(driver, 40, {1});

    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x02);
    EXPECT_EQ(vplc::Runtime::restarts(), 0);
    EXPECT_EQ(busCopies(), 1);
}

TEST_F(EventReception, AFailedModuleWriteIsFollowedByTheBusCopyAsUsual) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "1", "0"));
    station_.inject("ArpPlcGds_BeginWrite", vplc::Fault::next("frame is busy"));

    host::deliver(driver, 20, {1});

    const auto logs = recorder_.logs(&driver);
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].text, "Can't begin write: frame is busy");
    EXPECT_EQ(busCopies(), 1);
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(EventReception, AFailedBusCopyIsIgnored) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "1", "0"));
    station_.inject("ArpPlcAxio_WriteFromGdsToAxio", vplc::Fault::next("bus busy"));

    host::deliver(driver, 20, {1});

    EXPECT_TRUE(recorder_.logs(&driver).empty());
    EXPECT_TRUE(recorder_.stops().empty());
    EXPECT_EQ(station_.outputsInGds(1), std::vector<uint8_t>{0x02});
}

TEST_F(EventReception, EventsReachTheDriverDirectlyThroughItsHostBase) {
    auto& driver = start(DriverConfig::digital().digitalOut(20, "7", "0"));
    uint8_t on = 1;
    stEventParams_t event;
    event.pData = &on;
    event.nId = 20;
    event.nSize = 1;

    static_cast<CSI_base&>(driver).onReceiveEvent(event);

    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x80);
}
