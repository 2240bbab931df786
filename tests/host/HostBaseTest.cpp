// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "HostRecords.h"
#include "TestDriver.h"
#include "orbel/Recorder.h"

using hosttest::driverParams;
using hosttest::TestDriver;

namespace {

stServiceParams_t digitalInService() {
    stServiceParams_t service;
    service.byHost1 = 7;
    service.byHost2 = 9;
    service.nEventId = 12;
    service.sName = "Input 3";
    service.sServiceType = "DigitalIn";
    service.mapParams["PinNum"] = "3";
    return service;
}

stMappingElem_t mapping(uint16_t size) {
    stMappingElem_t element;
    element.nDataSize = size;
    element.sHostText1 = "block";
    element.vecTags.push_back(stTagElem_t{5, "tag", "", ""});
    return element;
}

}  // namespace

TEST(HostBase, ConstructionKeepsItsOwnCopiesOfTheThreeRecords) {
    stSP_Params_t params = driverParams("IO1");
    std::map<unsigned, stMappingElem_t> mappings{{12, mapping(1)}};
    std::map<unsigned, stServiceParams_t> services{{12, digitalInService()}};

    const TestDriver driver(params, {}, mappings, services);
    params.sServiceName = "changed";
    params.mapParams.clear();
    mappings[12].nDataSize = 99;
    mappings[13] = mapping(4);
    services[12].mapParams["PinNum"] = "6";

    EXPECT_EQ(driver.params().sServiceName, "IO1");
    EXPECT_EQ(driver.params().sDeviceType, "AXL_F_DI8_1_DO8_1");
    EXPECT_EQ(driver.params().mapParams.at("Consecutive Number"), "1");
    ASSERT_EQ(driver.mappings().size(), 1u);
    EXPECT_EQ(driver.mappings().at(12).nDataSize, 1);
    EXPECT_EQ(driver.mappings().at(12).vecTags.at(0).nHostWord, 5u);
    ASSERT_EQ(driver.services().size(), 1u);
    EXPECT_EQ(driver.services().at(12).mapParams.at("PinNum"), "3");
    EXPECT_EQ(driver.services().at(12).byHost2, 9);
}

TEST(HostBase, ANewDriverIsNotStopped) {
    const TestDriver driver(driverParams("IO1"));
    EXPECT_FALSE(driver.stopped());
}

TEST(HostBase, APublishedPayloadIsCopiedBeforePublishEventReturns) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"));
    uint8_t buffer[4] = {1, 2, 3, 4};

    driver.publishEvent(stEventParams_t{buffer, 21, 3});
    buffer[0] = 0xEE;
    buffer[1] = 0xEE;

    const auto published = recorder.published(&driver);
    ASSERT_EQ(published.size(), 1u);
    EXPECT_EQ(published[0].id, 21u);
    EXPECT_EQ(published[0].size, 3u);
    EXPECT_EQ(published[0].bytes, (std::vector<uint8_t>{1, 2, 3}));
}

TEST(HostBase, PublishingANullPayloadGivesAnEmptyPayloadWithTheGivenSize) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"));

    driver.publishEvent(stEventParams_t{nullptr, 21, 4});

    const auto published = recorder.published(&driver);
    ASSERT_EQ(published.size(), 1u);
    EXPECT_EQ(published[0].size, 4u);
    EXPECT_TRUE(published[0].bytes.empty());
}

TEST(HostBase, StoppingAServiceReportsACopyOfTheServiceAndStopsTheDriver) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"));
    stServiceParams_t service = digitalInService();

    driver.stopWithError(service, "Invalid digital input number.");
    service.sName = "changed";

    EXPECT_TRUE(driver.stopped());
    const auto stops = recorder.stops(&driver);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_TRUE(stops[0].hasService);
    EXPECT_EQ(stops[0].service.nEventId, 12u);
    EXPECT_EQ(stops[0].service.sName, "Input 3");
    EXPECT_EQ(stops[0].service.sServiceType, "DigitalIn");
    EXPECT_EQ(stops[0].message, "Invalid digital input number.");
}

TEST(HostBase, ADriverWideStopReportsNoServiceAndStopsTheDriver) {
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"));

    driver.stopWithError("Received event with null data.");

    EXPECT_TRUE(driver.stopped());
    const auto stops = recorder.stops(&driver);
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_FALSE(stops[0].hasService);
    EXPECT_EQ(stops[0].message, "Received event with null data.");
}

TEST(HostBase, ReceiveEventHandsTheEventToTheDriver) {
    TestDriver driver(driverParams("IO1"));
    uint8_t value = 1;
    CSI_base& base = driver;

    base.receiveEvent(stEventParams_t{&value, 30, 1});

    ASSERT_EQ(driver.received().size(), 1u);
    EXPECT_EQ(driver.received()[0].pData, &value);
    EXPECT_EQ(driver.received()[0].nId, 30u);
    EXPECT_EQ(driver.received()[0].nSize, 1u);
}

TEST(HostBase, TheTagConversionsAndDeInitialiseLeaveTheEventAndTheDriverAsTheyAre) {
    TestDriver driver(driverParams("IO1"));
    uint8_t value = 1;
    stEventParams_t event{&value, 30, 1};
    CSI_base& base = driver;

    base.convertMemToTag(event, stAppBlocInfo_t{});
    base.convertTagToMem(event, stAppBlocInfo_t{}, true, "text");
    base.deInitialise();

    EXPECT_EQ(event.pData, &value);
    EXPECT_EQ(event.nId, 30u);
    EXPECT_EQ(event.nSize, 1u);
    EXPECT_EQ(value, 1);
    EXPECT_FALSE(driver.stopped());
}
