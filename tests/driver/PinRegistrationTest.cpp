// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExposedDriverTest.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "hosting/LoggedLine.h"
#include "modules/AXL_F_AI2_AO2.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

namespace host = hosting::host;
using drivertest::ExposedDriverTest;
using hosting::DriverConfig;
using hosting::LoggedLine;
using testsupport::ExposedDriver;

namespace {

// Modules that answer registration differently from the real ones.
template <class Module>
class RefusingModule : public Module {
public:
    using Module::Module;
    bool registerService(int, ServiceType) override { return false; }
};

template <class Module>
class NeverTakenModule : public Module {
public:
    using Module::Module;
    bool isServiceAlreadyRegistered(int, ServiceType) override { return false; }
    bool registerService(int, ServiceType) override { return true; }
};

// Counts every question about pins that the driver asks the module.
template <class Module>
class QuestionedModule : public Module {
public:
    using Module::Module;
    bool isServiceAvailable(int pin, ServiceType type) override {
        ++questions;
        return Module::isServiceAvailable(pin, type);
    }
    bool isServiceAlreadyRegistered(int pin, ServiceType type) override {
        ++questions;
        return Module::isServiceAlreadyRegistered(pin, type);
    }
    bool registerService(int pin, ServiceType type) override {
        ++questions;
        return Module::registerService(pin, type);
    }
    std::string getValidRange(ServiceType type) override {
        ++questions;
        return Module::getValidRange(type);
    }

    int questions = 0;
};

constexpr const char* kTestModule = "TEST_MODULE";

// The line of a pin that the module does not offer, for a kind ("Digital input", ...); `end` ends
// both the format and the text (the analog input's has no full stop).
LoggedLine notAvailable(const std::string& kind, const std::string& pin, const std::string& range,
                        const std::string& end = ".") {
    return {
        2, kind + " pin with number &d is not available. Valid numbers are %s" + end,
        kind + " pin with number " + pin + " is not available. Valid numbers are " + range + end};
}

// The input table holds a record for the pin, with the event id and payload size given.
void expectInputRecord(const std::map<int, stEventParams_t>& inputs, int pin, uint32_t eventId,
                       uint32_t size) {
    ASSERT_EQ(inputs.count(pin), 1u);
    EXPECT_EQ(inputs.at(pin).nId, eventId);
    EXPECT_EQ(inputs.at(pin).nSize, size);
}

// The line of a pin that an earlier service of the same kind took.
LoggedLine inUse(const std::string& kind, int pin) {
    return {2, kind + " pin with number %d is already in use.",
            kind + " pin with number " + std::to_string(pin) + " is already in use."};
}

// Driver threads wait at the scan gate, so that the tables and the input buffers stay as the
// registration left them.
class PinRegistration : public ExposedDriverTest {
protected:
    PinRegistration() { clock_.holdScans(true); }

    // The driver logged `line` alone and stopped once, for the service, with `message`.
    void expectStopped(const LoggedLine& line, const std::string& message) const {
        EXPECT_EQ(logs(), std::vector<LoggedLine>{line});
        EXPECT_EQ(stopMessages(), std::vector<std::string>{message});
    }

    // The driver logged nothing and stopped once, for the service, with `message`, leaving no
    // output entry and writing nothing.
    void expectOutputRefusedSilently(const std::string& message) const {
        EXPECT_TRUE(logs().empty());
        EXPECT_EQ(stopMessages(), std::vector<std::string>{message});
        EXPECT_TRUE(driver_->outputs().empty());
        EXPECT_EQ(station_.calls("ArpPlcGds_BeginWrite"), 0);
    }

    // Makes the driver and initialises it, which must throw an Error saying `what`.
    template <class Error>
    void expectInitializeThrows(const DriverConfig& config, const char* what) {
        driver_.reset(new ExposedDriver(config));
        try {
            host::initialize(*driver_);
            FAIL() << "nothing thrown";
        } catch (const Error& error) {
            EXPECT_STREQ(error.what(), what);
        }
    }

    std::vector<std::string> stopMessages() const {
        std::vector<std::string> messages;
        for (const auto& stop : recorder_.stops(driver_.get())) {
            EXPECT_TRUE(stop.hasService);
            messages.push_back(stop.message);
        }
        return messages;
    }

    // Whether the driver's output registry binds the pin to the event id, as the given kind.
    ::testing::AssertionResult outputBound(int pin, uint32_t eventId, ServiceType type) const {
        const auto& outputs = driver_->outputs();
        const auto entry = outputs.find(pin);
        if (entry == outputs.end()) {
            return ::testing::AssertionFailure() << "no output entry for pin " << pin;
        }
        if (entry->second.nEventId != eventId || entry->second.eType != type) {
            return ::testing::AssertionFailure()
                   << "pin " << pin << " is bound to " << entry->second.nEventId << " as "
                   << entry->second.eType;
        }
        return ::testing::AssertionSuccess();
    }
};

}  // namespace

TEST_F(PinRegistration, ADigitalInputOnPin3GetsAZeroedBufferOfItsSizeAndItsEventId) {
    auto& driver = start(DriverConfig::digital().digitalIn(17, "3", 6));

    ASSERT_EQ(driver.digitalInputs().count(3), 1u);
    const stEventParams_t& event = driver.digitalInputs().at(3);
    EXPECT_EQ(event.nId, 17u);
    EXPECT_EQ(event.nSize, 6u);
    ASSERT_NE(event.pData, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(event.pData, event.pData + 6), std::vector<uint8_t>(6, 0));
    EXPECT_TRUE(driver.module()->isServiceAlreadyRegistered(3, DigitalIn));
    EXPECT_TRUE(recorder_.stops().empty());
    EXPECT_TRUE(logs().empty());
}

TEST_F(PinRegistration, AnAnalogInputOnPin1GetsAZeroedBufferOfItsSizeAndItsEventId) {
    auto& driver = start(DriverConfig::analog(2).analogIn(8, "1"));

    ASSERT_EQ(driver.analogInputs().count(1), 1u);
    const stEventParams_t& event = driver.analogInputs().at(1);
    EXPECT_EQ(event.nId, 8u);
    EXPECT_EQ(event.nSize, 4u);
    EXPECT_EQ(std::vector<uint8_t>(event.pData, event.pData + 4), std::vector<uint8_t>(4, 0));
    EXPECT_TRUE(driver.module()->isServiceAlreadyRegistered(1, AnalogIn));
}

TEST_F(PinRegistration, APinNumberAfterBlanksIsRead) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "   7"));
    EXPECT_EQ(driver.digitalInputs().count(7), 1u);
}

TEST_F(PinRegistration, TextAfterThePinNumberIsIgnored) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "7abc"));
    EXPECT_EQ(driver.digitalInputs().count(7), 1u);
}

TEST_F(PinRegistration, APinNumberOf1Point5IsPin1) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "1.5"));
    EXPECT_EQ(driver.digitalInputs().count(1), 1u);
}

TEST_F(PinRegistration, PinMinus1IsReportedAsNotAvailable) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "-1"));

    expectStopped(notAvailable("Digital input", "-1", "0 - 7"), "Invalid digital input number.");
    EXPECT_TRUE(driver.digitalInputs().empty());
}

TEST_F(PinRegistration, DigitalInputPin8IsNotAvailableOnTheDigitalModule) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "8"));

    expectStopped(notAvailable("Digital input", "8", "0 - 7"), "Invalid digital input number.");
    EXPECT_TRUE(driver.digitalInputs().empty());
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

TEST_F(PinRegistration, DigitalOutputPin8IsNotAvailableOnTheDigitalModule) {
    auto& driver = start(DriverConfig::digital().digitalOut(1, "8", "1"));

    expectStopped(notAvailable("Digital output", "8", "0 - 7"),
                  "Invalid digital output pin number.");
    EXPECT_TRUE(driver.outputs().empty());
    EXPECT_EQ(station_.calls("ArpPlcGds_BeginWrite"), 0);
}

TEST_F(PinRegistration, AnalogInputPin2IsNotAvailableOnTheAnalogModule) {
    auto& driver = start(DriverConfig::analog(2).analogIn(1, "2"));

    expectStopped(notAvailable("Analog input", "2", "0 - 1", ""), "Invalid analog input number.");
    EXPECT_TRUE(driver.analogInputs().empty());
}

TEST_F(PinRegistration, AnalogOutputPin5IsNotAvailableOnTheAnalogModule) {
    auto& driver = start(DriverConfig::analog(2).analogOut(1, "5", "1"));

    expectStopped(notAvailable("Analog output", "5", "0 - 1"), "Invalid analog output number");
    EXPECT_TRUE(driver.outputs().empty());
}

TEST_F(PinRegistration, ASecondAnalogInputOnOnePinIsInUseWithAFullStop) {
    auto& driver = start(DriverConfig::analog(2).analogIn(1, "1").analogIn(2, "1"));

    expectStopped(inUse("Analog input", 1), "Pin already in use.");
    ASSERT_EQ(driver.analogInputs().size(), 1u);
    EXPECT_EQ(driver.analogInputs().at(1).nId, 1u);
}

TEST_F(PinRegistration, ASecondDigitalInputOnOnePinIsInUseWithoutAFullStop) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "4").digitalIn(2, "4"));

    expectStopped(inUse("Digital input", 4), "Pin already in use");
    ASSERT_EQ(driver.digitalInputs().size(), 1u);
    EXPECT_EQ(driver.digitalInputs().at(4).nId, 1u);
}

TEST_F(PinRegistration, ASecondDigitalOutputOnOnePinIsInUseWithAFullStop) {
    auto& driver = start(DriverConfig::digital().digitalOut(1, "4", "0").digitalOut(2, "4", "1"));

    EXPECT_EQ(driver.outputs().size(), 1u);
    expectStopped(inUse("Digital output", 4), "Pin already in use.");
    EXPECT_TRUE(outputBound(4, 1, DigitalOut));
}

TEST_F(PinRegistration, ASecondAnalogOutputOnOnePinIsInUseWithoutAFullStop) {
    auto& driver = start(DriverConfig::analog(2).analogOut(1, "0", "1").analogOut(2, "0", "2"));

    expectStopped(inUse("Analog output", 0), "Pin already in use");
    EXPECT_TRUE(outputBound(0, 1, AnalogOut));
    EXPECT_EQ(driver.outputs().size(), 1u);
}

TEST_F(PinRegistration, ADigitalInputAndADigitalOutputMayShareAPinNumber) {
    auto& driver = start(DriverConfig::digital().digitalIn(1, "2").digitalOut(2, "2", "0"));

    EXPECT_TRUE(recorder_.stops().empty());
    EXPECT_EQ(driver.digitalInputs().count(2), 1u);
    EXPECT_TRUE(outputBound(2, 2, DigitalOut));
}

TEST_F(PinRegistration, AServiceWithoutPinNumThrowsAndLeavesTheHostsRecordWithoutIt) {
    expectInitializeThrows<std::invalid_argument>(
        DriverConfig::digital().service(1, "DigitalIn", 1), "stoi");

    EXPECT_TRUE(driver_->hostServices().at(1).mapParams.empty());
    EXPECT_TRUE(driver_->digitalInputs().empty());
    EXPECT_TRUE(recorder_.stops().empty());
    EXPECT_TRUE(logs().empty());
}

TEST_F(PinRegistration, APinNumAbcThrowsInvalidArgument) {
    expectInitializeThrows<std::invalid_argument>(DriverConfig::digital().digitalIn(1, "abc"),
                                                  "stoi");

    EXPECT_EQ(driver_->hostServices().at(1).mapParams.at("PinNum"), "abc");
    EXPECT_FALSE(driver_->module()->isServiceAlreadyRegistered(0, DigitalIn));
}

TEST_F(PinRegistration, APinNumBeyondTheIntRangeThrowsOutOfRange) {
    expectInitializeThrows<std::out_of_range>(DriverConfig::analog(2).analogIn(1, "99999999999"),
                                              "stoi");
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(PinRegistration, ADigitalOutputWithoutInitValThrowsBeforeTheModuleIsAsked) {
    expectInitializeThrows<std::invalid_argument>(
        DriverConfig::digital().service(1, "DigitalOut", 1, {{"PinNum", "3"}}), "stoi");

    EXPECT_FALSE(driver_->module()->isServiceAlreadyRegistered(3, DigitalOut));
    EXPECT_EQ(station_.calls("ArpPlcGds_BeginWrite"), 0);
    EXPECT_TRUE(driver_->outputs().empty());
    EXPECT_EQ(driver_->hostServices().at(1).mapParams.count("InitVal"), 0u);
}

TEST_F(PinRegistration, ADigitalOutputWithoutInitValIsNotAskedAboutAtAll) {
    auto* module = new QuestionedModule<AXL_F_DI8_1_DO8_1>(1);
    driver_.reset(new ExposedDriver(
        DriverConfig(kTestModule).service(1, "DigitalOut", 1, {{"PinNum", "3"}})));
    driver_->setModule(module);

    EXPECT_THROW(host::initialize(*driver_), std::invalid_argument);

    EXPECT_EQ(module->questions, 0);
}

TEST_F(PinRegistration, ADigitalOutputWithoutInitValThrowsEvenForAPinThatIsNotAvailable) {
    driver_.reset(
        new ExposedDriver(DriverConfig::digital().service(1, "DigitalOut", 1, {{"PinNum", "8"}})));

    EXPECT_THROW(host::initialize(*driver_), std::invalid_argument);

    EXPECT_TRUE(logs().empty());
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(PinRegistration, AnInvalidInitValThrowsEvenForAPinThatIsNotAvailable) {
    driver_.reset(new ExposedDriver(DriverConfig::analog(2).analogOut(1, "7", "x")));

    EXPECT_THROW(host::initialize(*driver_), std::invalid_argument);

    EXPECT_TRUE(logs().empty());
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(PinRegistration, InitVal1SwitchesADigitalOutputOn) {
    start(DriverConfig::digital().digitalOut(1, "6", "1"));
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x40);
}

TEST_F(PinRegistration, InitVal256WritesTheLow8BitsWhichAre0) {
    start(DriverConfig::digital().digitalOut(1, "0", "256"));
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x00);
    EXPECT_EQ(station_.calls("ArpPlcGds_BeginWrite"), 1);
}

TEST_F(PinRegistration, InitValMinus1Writes255) {
    // The module's set-or-clear rule makes 255 set pin 0 and clear every other pin; a value of 1
    // would have set pin 2 as well.
    start(DriverConfig::digital().digitalOut(1, "0", "-1").digitalOut(2, "2", "-1"));
    EXPECT_EQ(station_.digitalOutputsOnBus(1), 0x01);
}

namespace {

// An analog output's initial value and the word its channel carries on the bus after
// initialisation.
struct AnalogInitVal {
    std::string name;
    int channel;
    std::string initVal;
    unsigned short word;
};

void PrintTo(const AnalogInitVal& row, std::ostream* out) {
    *out << row.name;
}

class AnalogInitialValue : public PinRegistration,
                           public testing::WithParamInterface<AnalogInitVal> {};

}  // namespace

TEST_P(AnalogInitialValue, IsWrittenAsItsWord) {
    const AnalogInitVal& row = GetParam();
    start(DriverConfig::analog(2).analogOut(1, std::to_string(row.channel), row.initVal));
    EXPECT_EQ(station_.analogOutputOnBus(2, row.channel), row.word);
}

// Each case named as the test it was.
INSTANTIATE_TEST_SUITE_P(
    PinRegistration, AnalogInitialValue,
    testing::Values(AnalogInitVal{"AnAnalogInitVal1Writes3000", 1, "1", 3000},
                    AnalogInitVal{"AnAnalogInitVal10Writes30000", 0, "10", 30000},
                    AnalogInitVal{"AnAnalogInitVal1Point5IsTakenAs1", 0, "1.5", 3000}),
    [](const testing::TestParamInfo<AnalogInitVal>& info) { return info.param.name; });

TEST_F(PinRegistration, ADigitalOutputOnPin2IsRegisteredWithType3) {
    start(DriverConfig::digital().digitalOut(12, "2", "0"));
    EXPECT_TRUE(outputBound(2, 12, DigitalOut));
    EXPECT_EQ(static_cast<int>(DigitalOut), 3);
}

TEST_F(PinRegistration, AnAnalogOutputOnPin1IsRegisteredWithType1) {
    start(DriverConfig::analog(2).analogOut(13, "1", "0"));
    EXPECT_TRUE(outputBound(1, 13, AnalogOut));
    EXPECT_EQ(static_cast<int>(AnalogOut), 1);
}

TEST_F(PinRegistration, AnEventIdWithoutMappingGetsAnElementOfSize0AndAnEmptyPayload) {
    auto config = DriverConfig::digital().digitalIn(5, "1");
    config.mappings.clear();

    auto& driver = start(config);

    ASSERT_EQ(driver.hostMappings().count(5), 1u);
    EXPECT_EQ(driver.hostMappings().at(5).nDataSize, 0);
    ASSERT_EQ(driver.digitalInputs().count(1), 1u);
    EXPECT_EQ(driver.digitalInputs().at(1).nSize, 0u);
    EXPECT_NE(driver.digitalInputs().at(1).pData, nullptr);
    EXPECT_TRUE(recorder_.stops().empty());
}

TEST_F(PinRegistration, AModuleRefusingADigitalInputStopsSilentlyAndKeepsTheEntry) {
    auto& driver = start(DriverConfig(kTestModule).digitalIn(3, "5"),
                         new RefusingModule<AXL_F_DI8_1_DO8_1>(1));

    EXPECT_TRUE(logs().empty());
    EXPECT_EQ(stopMessages(),
              std::vector<std::string>{"Can't register service for digital input pin."});
    ASSERT_EQ(driver.digitalInputs().count(5), 1u);
    EXPECT_EQ(driver.digitalInputs().at(5).nId, 3u);
}

TEST_F(PinRegistration, AModuleRefusingAnAnalogInputIsLoggedAndStoppedAndKeepsTheEntry) {
    auto& driver =
        start(DriverConfig(kTestModule).analogIn(3, "1"), new RefusingModule<AXL_F_AI2_AO2>(2));

    expectStopped({2, "Could not register service for analog input pin %i",
                   "Could not register service for analog input pin 1"},
                  "Could not register service for analog input pin");
    EXPECT_EQ(driver.analogInputs().count(1), 1u);
}

TEST_F(PinRegistration, AModuleRefusingADigitalOutputGetsNoInitialWriteAndNoEntry) {
    start(DriverConfig(kTestModule).digitalOut(3, "5", "1"),
          new RefusingModule<AXL_F_DI8_1_DO8_1>(1));

    expectOutputRefusedSilently("Could not register service for digital output pin.");
}

TEST_F(PinRegistration, AModuleRefusingAnAnalogOutputGetsNoInitialWriteAndNoEntry) {
    start(DriverConfig(kTestModule).analogOut(3, "0", "4"), new RefusingModule<AXL_F_AI2_AO2>(2));

    expectOutputRefusedSilently("Can't register service for analog output pin");
}

TEST_F(PinRegistration, ALaterDigitalInputOnAPinReplacesTheEarlierRecord) {
    auto& driver = start(DriverConfig(kTestModule).digitalIn(1, "2").digitalIn(2, "2", 3),
                         new NeverTakenModule<AXL_F_DI8_1_DO8_1>(1));

    expectInputRecord(driver.digitalInputs(), 2, 2, 3);
}

TEST_F(PinRegistration, ALaterAnalogInputOnAPinKeepsTheEarlierRecord) {
    auto& driver = start(DriverConfig(kTestModule).analogIn(1, "0").analogIn(2, "0", 8),
                         new NeverTakenModule<AXL_F_AI2_AO2>(2));

    expectInputRecord(driver.analogInputs(), 0, 1, 4);
}

TEST_F(PinRegistration, ALaterOutputOnAPinTakesOverItsEntry) {
    auto& driver = start(DriverConfig(kTestModule).analogOut(1, "0", "0").analogOut(2, "0", "1"),
                         new NeverTakenModule<AXL_F_AI2_AO2>(2));

    EXPECT_TRUE(outputBound(0, 2, AnalogOut));
    EXPECT_EQ(driver.outputs().size(), 1u);
    EXPECT_EQ(station_.analogOutputOnBus(2, 0), 3000);
}
