// SPDX-License-Identifier: MIT
// Events a host should not send, sent in bursts: null payloads, ids nobody subscribed, the ids of
// restart services, and every payload size from 0 to 4096. Nothing crashes, and no output that is
// not bound to the event's id is ever written.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "modules/IbIlConversion.h"
#include "vplc/Runtime.h"

using hosting::DriverConfig;
using hosting::DriverRig;

namespace {

const std::vector<uint32_t> kSizes = {0, 1, 2, 3, 4, 5, 8, 255, 256, 1024, 4095, 4096};

// Pin 0 on event 100; pins 1 and 2 both on event 101; input pin 3 on event 110; restarts on
// events 190 and 191.
constexpr uint32_t kPin0 = 100;
constexpr uint32_t kPins1And2 = 101;
constexpr uint32_t kDigitalInput = 110;
constexpr uint32_t kRestartA = 190;
constexpr uint32_t kRestartB = 191;

// Channel 0 on event 200, channel 1 on event 201, input channel 0 on event 210, restart on 290.
constexpr uint32_t kChannel0 = 200;
constexpr uint32_t kChannel1 = 201;
constexpr uint32_t kAnalogInput = 210;
constexpr uint32_t kAnalogRestart = 290;

DriverConfig digitalRecords() {
    return DriverConfig::digital(DriverRig::kDigitalPosition)
        .service(1, "DigitalOut", kPin0, {{"PinNum", "0"}, {"InitVal", "0"}})
        .service(2, "DigitalOut", kPins1And2, {{"PinNum", "1"}, {"InitVal", "0"}})
        .service(3, "DigitalOut", kPins1And2, {{"PinNum", "2"}, {"InitVal", "0"}})
        .service(4, "DigitalIn", kDigitalInput, {{"PinNum", "3"}})
        .service(5, "RestartDevice", kRestartA)
        .service(6, "RestartDevice", kRestartB)
        .mapping(kPin0, 1)
        .mapping(kPins1And2, 1)
        .mapping(kDigitalInput, 1);
}

DriverConfig analogRecords() {
    return DriverConfig::analog(DriverRig::kAnalogPosition)
        .analogOut(kChannel0, "0", "0")
        .analogOut(kChannel1, "1", "0")
        .analogIn(kAnalogInput, "0")
        .restart(kAnalogRestart);
}

// A payload of `size` bytes of noise (at least four, as a host keeps for every event) whose first
// bytes are `head`.
std::vector<uint8_t> noisyPayload(std::mt19937& noise, uint32_t size,
                                  const std::vector<uint8_t>& head) {
    std::vector<uint8_t> payload(std::max<std::size_t>(size, 4));
    for (uint8_t& byte : payload) {
        byte = static_cast<uint8_t>(noise());
    }
    std::copy(head.begin(), head.end(), payload.begin());
    return payload;
}

// The state of one digital output pin after writing `value` to it: bit `pin` of the negated
// value, so 0 clears and 1 sets; other values are defined bit for bit the same way.
bool pinStateAfter(uint8_t value, int pin) {
    return (((0u - value) >> pin) & 1u) != 0;
}

class BadHostInput : public ::testing::Test {
protected:
    void startDigital() {
        rig_.create(digitalRecords());
        rig_.initialize();
        rig_.passGate();
    }
    void startAnalog() {
        rig_.create(analogRecords());
        rig_.initialize();
        rig_.passGate();
    }

    uint8_t digitalGds() { return rig_.station().outputsInGds(DriverRig::kDigitalPosition).at(0); }
    uint8_t digitalBus() { return rig_.station().digitalOutputsOnBus(DriverRig::kDigitalPosition); }
    std::vector<uint8_t> analogGds() {
        return rig_.station().outputsInGds(DriverRig::kAnalogPosition);
    }
    std::vector<uint8_t> analogBus() {
        return rig_.station().outputsOnBus(DriverRig::kAnalogPosition);
    }
    int calls(const char* function) { return rig_.station().calls(function); }

    std::vector<std::string> stopMessages() {
        std::vector<std::string> messages;
        for (const orbel::Stop& stop : rig_.recorder().stops()) {
            messages.push_back(stop.message);
        }
        return messages;
    }

    DriverRig rig_;
    std::mt19937 noise_{20240601};
};

}  // namespace

TEST_F(BadHostInput, ANullPayloadIsReportedOnceAndNeitherWritesNorCopiesWhateverItsId) {
    startDigital();
    const int writes = calls("ArpPlcGds_BeginWrite");
    const int copies = calls("ArpPlcAxio_WriteFromGdsToAxio");
    const std::vector<uint32_t> ids = {
        kPin0, kPins1And2, kDigitalInput, kRestartA, 77, 0, std::numeric_limits<uint32_t>::max()};
    for (int burst = 0; burst < 3; ++burst) {
        for (uint32_t id : ids) {
            rig_.deliverNull(id);
        }
        rig_.passGate();
    }

    EXPECT_EQ(stopMessages(), std::vector<std::string>(3 * ids.size(), "Null data pointer"));
    for (const orbel::Stop& stop : rig_.recorder().stops()) {
        EXPECT_FALSE(stop.hasService);
    }
    EXPECT_EQ(calls("ArpPlcGds_BeginWrite"), writes);
    EXPECT_EQ(calls("ArpPlcAxio_WriteFromGdsToAxio"), copies);
    EXPECT_EQ(vplc::Runtime::restarts(), 0);
    EXPECT_EQ(digitalBus(), 0x00);
}

TEST_F(BadHostInput, UnsubscribedIdsOfEverySizeAreReportedAndOnlyCopyTheUnchangedOutputs) {
    startDigital();
    rig_.deliver(kPins1And2, {1});
    const uint8_t outputs = digitalBus();
    const int writes = calls("ArpPlcGds_BeginWrite");
    const int copies = calls("ArpPlcAxio_WriteFromGdsToAxio");
    const std::vector<uint32_t> ids = {0, 77, 102, kDigitalInput,
                                       std::numeric_limits<uint32_t>::max()};
    for (uint32_t size : kSizes) {
        for (uint32_t id : ids) {
            rig_.deliver(id, noisyPayload(noise_, size, {1}), size);
        }
        rig_.passGate();
    }

    const std::size_t events = kSizes.size() * ids.size();
    EXPECT_EQ(stopMessages(), std::vector<std::string>(events, "Unsubscribed event received"));
    EXPECT_EQ(calls("ArpPlcGds_BeginWrite"), writes);
    EXPECT_EQ(calls("ArpPlcAxio_WriteFromGdsToAxio"), copies + static_cast<int>(events));
    EXPECT_EQ(digitalGds(), outputs);
    EXPECT_EQ(digitalBus(), outputs);
}

TEST_F(BadHostInput, RestartIdsOfEverySizeRestartOnceEachAndWriteNoOutput) {
    startDigital();
    const int writes = calls("ArpPlcGds_BeginWrite");
    for (uint32_t size : kSizes) {
        rig_.deliver(kRestartA, noisyPayload(noise_, size, {1}), size);
        rig_.deliver(kRestartB, noisyPayload(noise_, size, {0}), size);
    }

    EXPECT_EQ(vplc::Runtime::restarts(), static_cast<int>(2 * kSizes.size()));
    EXPECT_EQ(vplc::Runtime::liveServices(), 0);
    EXPECT_EQ(calls("ArpPlcGds_BeginWrite"), writes);
    EXPECT_EQ(digitalBus(), 0x00);
    EXPECT_TRUE(rig_.recorder().stops().empty());
}

TEST_F(BadHostInput, BurstsOfEveryPayloadSizeWriteOnlyTheDigitalPinsBoundToTheId) {
    startDigital();
    uint8_t expected = 0x00;
    for (uint32_t size : kSizes) {
        SCOPED_TRACE("size " + std::to_string(size));
        for (int value = 0; value < 256; ++value) {
            const auto byte = static_cast<uint8_t>(value);
            const uint32_t id = value % 2 == 0 ? kPin0 : kPins1And2;
            rig_.deliver(id, noisyPayload(noise_, size, {byte}), size);
            for (int pin : id == kPin0 ? std::vector<int>{0} : std::vector<int>{1, 2}) {
                const auto mask = static_cast<uint8_t>(1u << pin);
                expected = static_cast<uint8_t>(pinStateAfter(byte, pin) ? expected | mask
                                                                         : expected & ~mask);
            }
            ASSERT_EQ(digitalGds(), expected) << "value " << value;
            ASSERT_EQ(digitalBus(), expected) << "value " << value;
        }
        rig_.passGate();
    }
    EXPECT_TRUE(rig_.recorder().stops().empty());
}

TEST_F(BadHostInput, BurstsOfEveryPayloadSizeWriteOnlyTheAnalogChannelBoundToTheId) {
    startAnalog();
    const std::vector<float> values = {0.0f,
                                       1.0f,
                                       -1.0f,
                                       21.845f,
                                       22.0f,
                                       1e10f,
                                       -1e10f,
                                       std::numeric_limits<float>::infinity(),
                                       -std::numeric_limits<float>::infinity(),
                                       std::numeric_limits<float>::quiet_NaN(),
                                       std::numeric_limits<float>::denorm_min(),
                                       std::numeric_limits<float>::max()};
    std::vector<uint8_t> expected = analogGds();
    for (uint32_t size : kSizes) {
        SCOPED_TRACE("size " + std::to_string(size));
        for (std::size_t i = 0; i < values.size(); ++i) {
            const float value = values[i];
            std::vector<uint8_t> head(sizeof value);
            std::memcpy(head.data(), &value, sizeof value);
            const int channel = static_cast<int>(i % 2);
            rig_.deliver(channel == 0 ? kChannel0 : kChannel1, noisyPayload(noise_, size, head),
                         size);
            const uint16_t word = to_ib_il(value);
            expected.at(2 * channel) = static_cast<uint8_t>(word >> 8);
            expected.at(2 * channel + 1) = static_cast<uint8_t>(word & 0xFF);
            ASSERT_EQ(analogGds(), expected) << "value " << value;
            ASSERT_EQ(analogBus(), expected) << "value " << value;
        }
        rig_.deliver(kAnalogInput, noisyPayload(noise_, size, {}), size);
        rig_.deliver(kAnalogRestart, noisyPayload(noise_, size, {}), size);
        ASSERT_EQ(analogGds(), expected);
        rig_.passGate();
    }
    EXPECT_EQ(stopMessages(),
              std::vector<std::string>(kSizes.size(), "Unsubscribed event received"));
    EXPECT_EQ(vplc::Runtime::restarts(), static_cast<int>(kSizes.size()));
}
