// SPDX-License-Identifier: MIT
// Malformed numbers and misspelt names in the host's records: each gives exactly the value or
// the exception the standard base-10 conversion gives, logs exactly the driver's lines, and leaves
// the host's records as they were.

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "ExposedDriver.h"
#include "RecordComparison.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/LoggedLine.h"
#include "modules/IbIlConversion.h"

using hosting::DriverConfig;
using hosting::DriverRig;
using hosting::LoggedLine;
using testsupport::ExposedDriver;

namespace {

// True when the given records hold exactly the records of `config`, field by field.
bool sameAs(const DriverConfig& config, const stSP_Params_t& params,
            const std::map<unsigned, stMappingElem_t>& mappings,
            const std::map<unsigned, stServiceParams_t>& services) {
    return fuzz::sameRecords(config.params, params) &&
           fuzz::sameRecords(config.mappings, mappings) &&
           fuzz::sameRecords(config.services, services);
}

enum class Outcome { Value, InvalidArgument, OutOfRange };

struct NumberForm {
    std::string name;
    std::string text;
    Outcome outcome;
    int value = 0;
};

std::vector<NumberForm> numberForms() {
    return {
        {"empty", "", Outcome::InvalidArgument},
        {"blanks only", "  \t ", Outcome::InvalidArgument},
        {"a lone minus", "-", Outcome::InvalidArgument},
        {"a lone plus", "+", Outcome::InvalidArgument},
        {"a sign with a blank before the digits", "- 5", Outcome::InvalidArgument},
        {"two signs", "+-3", Outcome::InvalidArgument},
        {"letters first", "abc12", Outcome::InvalidArgument},
        {"0x10", "0x10", Outcome::Value, 0},
        {"a blank, digits and letters", " 12abc", Outcome::Value, 12},
        {"a decimal fraction", "1.5", Outcome::Value, 1},
        {"a plus sign", "+7", Outcome::Value, 7},
        {"minus zero", "-0", Outcome::Value, 0},
        {"every C white space first", "\t\n\v\f\r 5", Outcome::Value, 5},
        {"the largest int", "2147483647", Outcome::Value, INT_MAX},
        {"one above the largest int", "2147483648", Outcome::OutOfRange},
        {"the smallest int", "-2147483648", Outcome::Value, INT_MIN},
        {"one below the smallest int", "-2147483649", Outcome::OutOfRange},
        {"a 400-digit number", std::string(400, '9'), Outcome::OutOfRange},
        {"400 digits of which 399 leading zeros", std::string(399, '0') + "7", Outcome::Value, 7},
        {"a NUL after the first digit",
         std::string("1\0"
                     "9",
                     3),
         Outcome::Value, 1},
        {"a NUL first",
         std::string("\0"
                     "5",
                     2),
         Outcome::InvalidArgument},
        {"an Arabic-Indic three", "\xD9\xA3", Outcome::InvalidArgument},
        {"fullwidth digits", "\xEF\xBC\x91\xEF\xBC\x92", Outcome::InvalidArgument},
        {"a no-break space first",
         "\xC2\xA0"
         "5",
         Outcome::InvalidArgument},
        {"digits then a non-ASCII letter", "7\xC3\xA9", Outcome::Value, 7},
    };
}

// Runs `action` and checks that it throws the standard exception of `outcome` with the text
// "stoi", and nothing else.
void expectStoiFailure(Outcome outcome, const std::function<void()>& action) {
    try {
        action();
        ADD_FAILURE() << "no exception";
    } catch (const std::invalid_argument& e) {
        EXPECT_EQ(outcome, Outcome::InvalidArgument) << "std::invalid_argument";
        EXPECT_STREQ(e.what(), "stoi");
    } catch (const std::out_of_range& e) {
        EXPECT_EQ(outcome, Outcome::OutOfRange) << "std::out_of_range";
        EXPECT_STREQ(e.what(), "stoi");
    }
}

ExposedDriver& adoptExposed(DriverRig& rig, const DriverConfig& records) {
    return static_cast<ExposedDriver&>(
        rig.adopt([&records] { return new ExposedDriver(records); }));
}

std::vector<std::string> stopMessages(const orbel::Recorder& recorder) {
    std::vector<std::string> messages;
    for (const orbel::Stop& stop : recorder.stops()) {
        messages.push_back(stop.message);
    }
    return messages;
}

LoggedLine notAvailable(const std::string& format, int pin, const std::string& range) {
    std::string text = format;
    text.replace(text.find("&d"), 2, std::to_string(pin));
    text.replace(text.find("%s"), 2, range);
    return {2, format, text};
}

// One pin service kind as the hostile "PinNum" table meets it.
struct PinKind {
    std::string name;
    std::function<DriverConfig(const std::string& pin)> records;
    int pins;  // pins 0 to pins - 1 exist
    std::string notAvailableFormat;
    std::string notAvailableStop;
    std::string range;
    std::function<bool(const ExposedDriver&, int pin)> registered;
};

std::vector<PinKind> pinKinds() {
    const auto inDigitalInputs = [](const ExposedDriver& driver, int pin) {
        return driver.digitalInputs().count(pin) == 1;
    };
    const auto inOutputs = [](const ExposedDriver& driver, int pin) {
        return driver.outputs().count(pin) == 1;
    };
    return {
        {"DigitalIn",
         [](const std::string& pin) { return DriverConfig::digital(1).digitalIn(10, pin); }, 8,
         "Digital input pin with number &d is not available. Valid numbers are %s.",
         "Invalid digital input number.", "0 - 7", inDigitalInputs},
        {"DigitalOut",
         [](const std::string& pin) { return DriverConfig::digital(1).digitalOut(20, pin, "0"); },
         8, "Digital output pin with number &d is not available. Valid numbers are %s.",
         "Invalid digital output pin number.", "0 - 7", inOutputs},
        {"AnalogIn",
         [](const std::string& pin) { return DriverConfig::analog(2).analogIn(30, pin); }, 2,
         "Analog input pin with number &d is not available. Valid numbers are %s",
         "Invalid analog input number.", "0 - 1",
         [](const ExposedDriver& driver, int pin) {
             return driver.analogInputs().count(pin) == 1;
         }},
        {"AnalogOut",
         [](const std::string& pin) { return DriverConfig::analog(2).analogOut(40, pin, "0"); }, 2,
         "Analog output pin with number &d is not available. Valid numbers are %s.",
         "Invalid analog output number", "0 - 1", inOutputs},
    };
}

// Initialises the driver of `records`, one output whose InitVal is `form`: a value is written
// once and the thread starts; any other form throws the stoi exception before any write, and no
// thread starts. Either way nothing is logged or stopped, and the host's records stay as they were.
const ExposedDriver& initializeWithInitVal(DriverRig& rig, const DriverConfig& records,
                                           const NumberForm& form) {
    const ExposedDriver& driver = adoptExposed(rig, records);
    if (form.outcome == Outcome::Value) {
        rig.initialize();
    } else {
        expectStoiFailure(form.outcome, [&] { rig.initialize(); });
    }
    const bool written = form.outcome == Outcome::Value;
    EXPECT_EQ(rig.station().calls("ArpPlcGds_BeginWrite"), written ? 1 : 0);
    EXPECT_EQ(rig.threadStarted(), written);
    EXPECT_EQ(hosting::linesAfterVersion(rig.recorder()), std::vector<LoggedLine>{});
    EXPECT_TRUE(rig.recorder().stops().empty());
    EXPECT_TRUE(sameAs(records, driver.hostParams(), driver.hostMappings(), driver.hostServices()));
    return driver;
}

}  // namespace

TEST(HostileConfiguration, EveryConsecutiveNumberFormGivesTheStoiValueOrExceptionAndNoFailureLine) {
    for (const NumberForm& form : numberForms()) {
        SCOPED_TRACE(form.name);
        DriverRig rig;
        const DriverConfig records =
            DriverConfig::digital(1).digitalIn(10, "3").param("Consecutive Number", form.text);
        DriverConfig handed = records;

        if (form.outcome == Outcome::Value) {
            const ExposedDriver& driver = adoptExposed(rig, records);
            EXPECT_EQ(driver.consecutiveNumber(), form.value);
            EXPECT_TRUE(
                sameAs(records, driver.hostParams(), driver.hostMappings(), driver.hostServices()));
        } else {
            expectStoiFailure(form.outcome, [&] { rig.create(handed); });
            EXPECT_TRUE(sameAs(records, records.params, handed.mappings, handed.services));
        }

        EXPECT_EQ(rig.recorder().logs().size(), 1u);
        EXPECT_EQ(hosting::linesAfterVersion(rig.recorder()), std::vector<LoggedLine>{});
        EXPECT_TRUE(rig.recorder().stops().empty());
    }
}

TEST(HostileConfiguration, AMissingConsecutiveNumberThrowsInvalidArgumentAfterTheVersionLine) {
    DriverRig rig;
    const DriverConfig records = DriverConfig::digital(1).withoutParam("Consecutive Number");
    DriverConfig handed = records;
    expectStoiFailure(Outcome::InvalidArgument, [&] { rig.create(handed); });
    ASSERT_EQ(rig.recorder().logs().size(), 1u);
    EXPECT_EQ(rig.recorder().logs()[0].text,
              "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO1]");
    EXPECT_TRUE(sameAs(records, records.params, handed.mappings, handed.services));
}

TEST(HostileConfiguration, EveryPinNumFormGivesTheStoiPinOrExceptionWithTheDriversLines) {
    for (const PinKind& kind : pinKinds()) {
        for (const NumberForm& form : numberForms()) {
            SCOPED_TRACE(kind.name + ", PinNum " + form.name);
            DriverRig rig;
            const DriverConfig records = kind.records(form.text);
            ExposedDriver& driver = adoptExposed(rig, records);

            std::vector<LoggedLine> expectedLines;
            std::vector<std::string> expectedStops;
            if (form.outcome != Outcome::Value) {
                expectStoiFailure(form.outcome, [&] { rig.initialize(); });
                EXPECT_EQ(rig.station().calls("ArpPlcGds_BeginWrite"), 0);
            } else if (form.value >= 0 && form.value < kind.pins) {
                rig.initialize();
                EXPECT_TRUE(kind.registered(driver, form.value));
            } else {
                rig.initialize();
                expectedLines = {notAvailable(kind.notAvailableFormat, form.value, kind.range)};
                expectedStops = {kind.notAvailableStop};
            }

            const bool runs = form.outcome == Outcome::Value && expectedStops.empty();
            EXPECT_EQ(rig.threadStarted(), runs);
            EXPECT_EQ(rig.station().calls("ArpPlcAxio_WriteFromGdsToAxio"), runs ? 1 : 0);
            EXPECT_EQ(hosting::linesAfterVersion(rig.recorder()), expectedLines);
            EXPECT_EQ(stopMessages(rig.recorder()), expectedStops);
            EXPECT_TRUE(
                sameAs(records, driver.hostParams(), driver.hostMappings(), driver.hostServices()));
        }
    }
}

TEST(HostileConfiguration, EveryInitValFormOfADigitalOutputWritesTheLowBitOrThrows) {
    for (const NumberForm& form : numberForms()) {
        SCOPED_TRACE(form.name);
        DriverRig rig;
        const DriverConfig records = DriverConfig::digital(1).digitalOut(20, "0", form.text);
        const ExposedDriver& driver = initializeWithInitVal(rig, records, form);
        if (form.outcome == Outcome::Value) {
            // Pin 0 takes bit 0 of the negated low byte, which is bit 0 of the value itself.
            const uint8_t expected = (static_cast<unsigned>(form.value) & 1u) != 0 ? 0x01 : 0x00;
            EXPECT_EQ(rig.station().digitalOutputsOnBus(1), expected);
            EXPECT_EQ(driver.outputs().count(0), 1u);
        } else {
            EXPECT_TRUE(driver.outputs().empty());
        }
    }
}

TEST(HostileConfiguration, EveryInitValFormOfAnAnalogOutputWritesItsWordOrThrows) {
    for (const NumberForm& form : numberForms()) {
        SCOPED_TRACE(form.name);
        DriverRig rig;
        const DriverConfig records = DriverConfig::analog(2).analogOut(40, "0", form.text);
        initializeWithInitVal(rig, records, form);
        if (form.outcome == Outcome::Value) {
            EXPECT_EQ(rig.station().analogOutputOnBus(2, 0),
                      to_ib_il(static_cast<float>(form.value)));
        }
    }
}

TEST(HostileConfiguration, ServiceTextsDifferingInCaseBlanksOrCharactersAreRefusedAsUnsupported) {
    const std::vector<std::string> texts = {
        "digitalin",
        "DIGITALIN",
        "DigitalIn ",
        " DigitalIn",
        "Digital In",
        "DigitalIn\n",
        std::string("DigitalIn\0", 10),
        "D\xD1\x96gitalIn",      // a Cyrillic i
        "\xEF\xBC\xA4igitalIn",  // a fullwidth D
        "DigitalIn\xC2\xA0",     // a no-break space
        "",
        "Unsupported",
        "5",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE("service text of " + std::to_string(text.size()) + " bytes: " + text);
        DriverRig rig;
        const DriverConfig records =
            DriverConfig::digital(1).service(10, text, 10, {{"PinNum", "3"}}).digitalIn(20, "4");
        ExposedDriver& driver = adoptExposed(rig, records);
        rig.initialize();

        ASSERT_EQ(rig.recorder().stops().size(), 1u);
        const orbel::Stop stop = rig.recorder().stops()[0];
        EXPECT_EQ(stop.message, "Unsupported service type.");
        EXPECT_TRUE(stop.hasService);
        EXPECT_EQ(stop.service.sServiceType, text);
        EXPECT_EQ(stop.service.nEventId, 10u);
        EXPECT_TRUE(driver.digitalInputs().empty());
        EXPECT_EQ(hosting::linesAfterVersion(rig.recorder()), std::vector<LoggedLine>{});
        EXPECT_FALSE(rig.threadStarted());
        EXPECT_EQ(rig.station().calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
        EXPECT_TRUE(
            sameAs(records, driver.hostParams(), driver.hostMappings(), driver.hostServices()));
    }
}

TEST(HostileConfiguration, DeviceTypesDifferingInCaseBlanksOrCharactersMakeNoModule) {
    const std::vector<std::string> deviceTypes = {
        "axl_f_di8_1_do8_1",
        "AXL_F_DI8_1_DO8_1 ",
        " AXL_F_DI8_1_DO8_1",
        "AXL F DI8/1 DO8/1",
        std::string("AXL_F_DI8_1_DO8_1\0", 18),
        "AXL_F_AI2_AO2_",
        "AXL_F_\xD0\x90I2_AO2",  // a Cyrillic A
        "AXL_F_AI2_AO2\xC2\xA0",
        "",
    };
    for (const std::string& deviceType : deviceTypes) {
        SCOPED_TRACE("device type of " + std::to_string(deviceType.size()) +
                     " bytes: " + deviceType);
        {
            SCOPED_TRACE("with a service");
            DriverRig rig;
            const DriverConfig records = DriverConfig(deviceType, "1").digitalIn(10, "3");
            ExposedDriver& driver = adoptExposed(rig, records);
            rig.initialize();
            EXPECT_EQ(stopMessages(rig.recorder()),
                      std::vector<std::string>{"Unsupported service type."});
            EXPECT_EQ(rig.station().calls("ArpPlcIo_GetBufferPtrByBufferID"), 0);
            EXPECT_FALSE(rig.threadStarted());
            EXPECT_EQ(hosting::linesAfterVersion(rig.recorder()), std::vector<LoggedLine>{});
            EXPECT_TRUE(
                sameAs(records, driver.hostParams(), driver.hostMappings(), driver.hostServices()));
        }
        {
            SCOPED_TRACE("without services");
            DriverRig rig;
            rig.create(DriverConfig(deviceType, "1"));
            rig.initialize();
            rig.passGate();
            rig.passGate();
            EXPECT_TRUE(rig.threadStarted());
            EXPECT_TRUE(rig.recorder().stops().empty());
            EXPECT_TRUE(rig.recorder().published().empty());
            EXPECT_EQ(rig.station().calls("ArpPlcIo_GetBufferPtrByBufferID"), 0);
            EXPECT_EQ(rig.station().calls("ArpPlcGds_BeginRead"), 0);
        }
    }
}
