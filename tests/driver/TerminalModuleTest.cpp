// SPDX-License-Identifier: MIT
// What both terminal modules do alike: failed frame locks, unknown ports, pins outside the module,
// the service types and pins they offer, their valid range, pins registered twice and operations
// of the other kind. Each behaviour is checked
// once, for a case of each module; the digital module's cases run under the prefix
// "DigitalModule", the analog module's under "AnalogModule", each named as its own test was.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "hosting/LoggedLine.h"
#include "modules/AXL_F_AI2_AO2.h"
#include "modules/AXL_F_DI8_1_DO8_1.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

using hosting::LoggedLine;
using hosting::loggedLines;

namespace {

// Reads and writes one pin of one kind, digital or analog.
struct PinAccess {
    int (*read)(INumberedPinModule& module, int pin);
    void (*write)(INumberedPinModule& module, int pin, int value);
};

const PinAccess kDigitalPins{
    [](INumberedPinModule& module, int pin) -> int { return module.readDigital(pin); },
    [](INumberedPinModule& module, int pin, int value) {
        module.writeDigital(pin, static_cast<unsigned char>(value));
    }};
const PinAccess kAnalogPins{
    [](INumberedPinModule& module, int pin) -> int { return module.readAnalog(pin); },
    [](INumberedPinModule& module, int pin, int value) {
        module.writeAnalog(pin, static_cast<unsigned short>(value));
    }};

// One terminal module as these tests see it: its bus, its input port, how it is made, its own
// kind of pin and the other kind.
struct TerminalModule {
    vplc::Module bus;
    std::string inPort;
    std::function<std::unique_ptr<INumberedPinModule>(int position)> make;
    PinAccess own;
    PinAccess other;
};

const TerminalModule kDigital{
    vplc::Module::DI8_DO8, "DI8",
    [](int position) { return std::make_unique<AXL_F_DI8_1_DO8_1>(position); }, kDigitalPins,
    kAnalogPins};
const TerminalModule kAnalog{vplc::Module::AI2_AO2, "AI32",
                             [](int position) { return std::make_unique<AXL_F_AI2_AO2>(position); },
                             kAnalogPins, kDigitalPins};

class ModuleBehaviour;

// One case: its name, the module, the bytes at the input port of position 1 before the module is
// made, the behaviour checked, and the module's position on the bus of one module.
struct ModuleCase {
    std::string name;
    const TerminalModule* module = nullptr;
    std::vector<uint8_t> input;
    std::function<void(ModuleBehaviour& test)> check;
    int position = 1;
};

// Position 2 of a bus of one module, so that neither of the module's ports exists.
constexpr int kMissingPosition = 2;

void PrintTo(const ModuleCase& row, std::ostream* out) {
    *out << row.name;
}

std::string caseName(const testing::TestParamInfo<ModuleCase>& info) {
    return info.param.name;
}

// The module on a bus of its own, with the case's input bytes in place; `recorder_` sees what the
// module logs from its construction on.
class ModuleBehaviour : public testing::TestWithParam<ModuleCase> {
public:
    ModuleBehaviour() {
        const ModuleCase& row = GetParam();
        if (!row.input.empty()) {
            const auto offset = station_.variableOffset("Arp.Io.AxlC/0.~" + row.module->inPort);
            EXPECT_TRUE(offset.has_value());
            station_.setFrameBytes(vplc::Frame::In, offset.value_or(0), row.input);
        }
        module_ = row.module->make(row.position);
    }

    int read(int pin) { return GetParam().module->own.read(*module_, pin); }
    void write(int pin, int value) { GetParam().module->own.write(*module_, pin, value); }

    vplc::Station station_ = vplc::Station::of({GetParam().module->bus});
    orbel::Recorder recorder_;
    std::unique_ptr<INumberedPinModule> module_;
};

// Runs `act` and expects the one line the module logs meanwhile.
void expectOneLine(const LoggedLine& line, const std::function<void()>& act) {
    orbel::Recorder recorder;

    act();

    EXPECT_EQ(loggedLines(recorder), std::vector<LoggedLine>{line});
}

// Runs `act` and expects that the module logs nothing meanwhile.
void expectNoLine(const std::function<void()>& act) {
    orbel::Recorder recorder;

    act();

    EXPECT_TRUE(recorder.logs().empty());
}

// Makes `call` fail once with `error`, runs `act`, and expects the one line the module logs.
void expectFailureLine(ModuleBehaviour& test, const char* call, const char* error,
                       const LoggedLine& line, const std::function<void()>& act) {
    expectOneLine(line, [&] {
        test.station_.inject(call, vplc::Fault::next(error));
        act();
    });
}

// What the analog module logs for a service type that it does not offer at a pin.
LoggedLine notAvailable(ServiceType type) {
    return {2, "Service %d not available for AIAO Module",
            "Service " + std::to_string(type) + " not available for AIAO Module"};
}

void writesLeave(ModuleBehaviour& test, const std::vector<std::pair<int, int>>& writes,
                 const std::vector<uint8_t>& outputs) {
    for (const auto& [pin, value] : writes) {
        test.write(pin, value);
    }
    EXPECT_EQ(test.station_.outputsInGds(1), outputs);
}

const LoggedLine kNoBeginRead{2, "Can't begin read: %s", "Can't begin read: no data"};
const LoggedLine kNoBeginWrite{2, "Can't begin write: %s", "Can't begin write: frame is busy"};
const LoggedLine kNoUnlock{2, "Can't unlock buffer: %s", "Can't unlock buffer: cannot unlock"};

void failedBeginReadLogsCallsEndAndReadsZero(ModuleBehaviour& test, int pin) {
    expectFailureLine(test, "ArpPlcGds_BeginRead", "no data", kNoBeginRead,
                      [&] { EXPECT_EQ(test.read(pin), 0); });
    EXPECT_EQ(test.station_.calls("ArpPlcGds_EndRead"), 1);
}

void failedEndReadIsLoggedAndTheValueReadIsStillReturned(ModuleBehaviour& test, int pin,
                                                         int value) {
    expectFailureLine(test, "ArpPlcGds_EndRead", "cannot unlock", kNoUnlock,
                      [&] { EXPECT_EQ(test.read(pin), value); });
    test.read(pin);
    EXPECT_EQ(test.station_.openLocks(), 0);
}

void failedBeginWriteLogsStillCallsEndAndLeavesTheOutputs(ModuleBehaviour& test, int pin, int value,
                                                          int endWrites,
                                                          const std::vector<uint8_t>& outputs) {
    expectFailureLine(test, "ArpPlcGds_BeginWrite", "frame is busy", kNoBeginWrite,
                      [&] { test.write(pin, value); });
    EXPECT_EQ(test.station_.calls("ArpPlcGds_EndWrite"), endWrites);
    EXPECT_EQ(test.station_.outputsInGds(1), outputs);
}

void failedEndWriteIsLoggedAfterTheValueWasStored(ModuleBehaviour& test, int pin, int value,
                                                  const std::vector<uint8_t>& outputs) {
    expectFailureLine(test, "ArpPlcGds_EndWrite", "cannot unlock", kNoUnlock,
                      [&] { test.write(pin, value); });
    EXPECT_EQ(test.station_.outputsInGds(1), outputs);
    // The platform leaves the lock with this thread; the next write's End gives it back.
    test.write(pin, value);
    EXPECT_EQ(test.station_.openLocks(), 0);
}

void expectNoFrameLocked(const ModuleBehaviour& test) {
    EXPECT_EQ(test.station_.calls("ArpPlcGds_BeginRead"), 0);
    EXPECT_EQ(test.station_.calls("ArpPlcGds_BeginWrite"), 0);
}

void otherKindReadsZeroAndWritesNothing(ModuleBehaviour& test, int value) {
    const PinAccess& other = test.GetParam().module->other;

    EXPECT_EQ(other.read(*test.module_, 0), 0);
    other.write(*test.module_, 0, value);

    expectNoFrameLocked(test);
}

// Reads give 0 and writes of `value` lock no frame.
void neitherReadNorWritten(ModuleBehaviour& test, const std::vector<int>& reads,
                           const std::vector<int>& writes, int value) {
    for (int pin : reads) {
        EXPECT_EQ(test.read(pin), 0) << "pin " << pin;
    }
    for (int pin : writes) {
        test.write(pin, value);
    }
    expectNoFrameLocked(test);
}

// The lines of a module at position 2 of a bus of one module: neither of its ports exists.
std::vector<LoggedLine> unknownPortLines(const std::string& inPort, const std::string& outPort) {
    const auto line = [](const std::string& port, const std::string& buffer) {
        return LoggedLine{2, "Can't get offset to port: %s",
                          "Can't get offset to port: Variable 'Arp.Io.AxlC/1.~" + port +
                              "' does not exist in buffer '" + buffer + "'"};
    };
    return {line(inPort, "1:IN"), line(outPort, "1:OUT")};
}

// Every (pin, type) in `available` is available; no type is at `outside` or -1, nor the other
// kind at pin 0.
void pinsAvailable(ModuleBehaviour& test, const std::vector<std::pair<int, ServiceType>>& available,
                   int outside, ServiceType otherKind) {
    for (const auto& [pin, type] : available) {
        EXPECT_TRUE(test.module_->isServiceAvailable(pin, type)) << "pin " << pin;
    }
    for (ServiceType type : {AnalogIn, AnalogOut, DigitalIn, DigitalOut, RestartDevice}) {
        EXPECT_FALSE(test.module_->isServiceAvailable(outside, type)) << "type " << type;
        EXPECT_FALSE(test.module_->isServiceAvailable(-1, type)) << "type " << type;
    }
    EXPECT_FALSE(test.module_->isServiceAvailable(0, otherKind));
}

std::vector<std::pair<int, ServiceType>> allDigitalPins() {
    std::vector<std::pair<int, ServiceType>> pins;
    for (int pin = 0; pin < 8; ++pin) {
        pins.emplace_back(pin, DigitalIn);
        pins.emplace_back(pin, DigitalOut);
    }
    return pins;
}

void supportsOnly(ModuleBehaviour& test, const std::vector<ServiceType>& supported) {
    for (ServiceType type : {AnalogIn, AnalogOut, DigitalIn, DigitalOut, RestartDevice, Unsupported,
                             static_cast<ServiceType>(-1)}) {
        EXPECT_EQ(test.module_->isServiceTypeSupported(type),
                  std::find(supported.begin(), supported.end(), type) != supported.end())
            << "type " << type;
    }
}

void validRangeIs(ModuleBehaviour& test, const std::string& range, ServiceType own,
                  ServiceType other) {
    EXPECT_EQ(test.module_->getValidRange(own), range);
    EXPECT_EQ(test.module_->getValidRange(RestartDevice), range);
    EXPECT_EQ(test.module_->getValidRange(other), "");
}

void registeringTheSamePinTwiceSucceedsOnlyTheFirstTime(ModuleBehaviour& test, int pin,
                                                        ServiceType type) {
    INumberedPinModule& module = *test.module_;

    EXPECT_FALSE(module.isServiceAlreadyRegistered(pin, type));
    EXPECT_TRUE(module.registerService(pin, type));
    EXPECT_TRUE(module.isServiceAlreadyRegistered(pin, type));
    EXPECT_FALSE(module.registerService(pin, type));
}

// The cases of both modules, each behaviour's side by side.
std::vector<ModuleCase> cases() {
    return {
        {"AFailedBeginReadLogsCallsEndReadAndReadsZero",
         &kDigital,
         {0xFF},
         [](ModuleBehaviour& test) { failedBeginReadLogsCallsEndAndReadsZero(test, 4); }},
        {"AFailedBeginReadLogsCallsEndReadAndReadsZero",
         &kAnalog,
         {0x75, 0x30},
         [](ModuleBehaviour& test) { failedBeginReadLogsCallsEndAndReadsZero(test, 0); }},

        {"AFailedEndReadIsLoggedAndTheValueReadIsStillReturned",
         &kDigital,
         {0x10},
         [](ModuleBehaviour& test) {
             failedEndReadIsLoggedAndTheValueReadIsStillReturned(test, 4, 1);
         }},
        {"AFailedEndReadIsLoggedAndTheWordIsStillReturned",
         &kAnalog,
         {0x75, 0x30},
         [](ModuleBehaviour& test) {
             failedEndReadIsLoggedAndTheValueReadIsStillReturned(test, 0, 30000);
         }},

        {"AFailedBeginWriteLogsAndStillCallsEndWrite",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             failedBeginWriteLogsStillCallsEndAndLeavesTheOutputs(test, 3, 1, 1, {0x00});
         }},
        {"AFailedBeginWriteLogsStillCallsEndWriteAndLeavesTheOldWord",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             test.write(0, 0x0102);
             failedBeginWriteLogsStillCallsEndAndLeavesTheOutputs(test, 0, 0x0304, 2,
                                                                  {0x01, 0x02, 0x00, 0x00});
         }},

        {"AFailedEndWriteIsLoggedAfterTheByteWasStored",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             failedEndWriteIsLoggedAfterTheValueWasStored(test, 6, 1, {0x40});
         }},
        {"AFailedEndWriteIsLoggedAfterTheWordWasStored",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             failedEndWriteIsLoggedAfterTheValueWasStored(test, 1, 0x0506,
                                                          {0x00, 0x00, 0x05, 0x06});
         }},

        {"AnalogOperationsReadZeroAndWriteNothing",
         &kDigital,
         {},
         [](ModuleBehaviour& test) { otherKindReadsZeroAndWritesNothing(test, 30000); }},
        {"DigitalOperationsReadZeroAndWriteNothing",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) { otherKindReadsZeroAndWritesNothing(test, 1); }},

        {"SupportsDigitalInputsDigitalOutputsAndRestartOnly",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             supportsOnly(test, {DigitalIn, DigitalOut, RestartDevice});
         }},
        {"SupportsAnalogInputsAnalogOutputsAndRestartOnly",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             supportsOnly(test, {AnalogIn, AnalogOut, RestartDevice});
         }},

        {"TheValidRangeIs0To7ForItsKindsAndEmptyForOthers",
         &kDigital,
         {},
         [](ModuleBehaviour& test) { validRangeIs(test, "0 - 7", DigitalIn, AnalogIn); }},
        {"TheValidRangeIs0To1ForItsKindsAndEmptyForOthers",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) { validRangeIs(test, "0 - 1", AnalogOut, DigitalIn); }},

        {"RegisteringTheSamePinTwiceSucceedsOnlyTheFirstTime",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             registeringTheSamePinTwiceSucceedsOnlyTheFirstTime(test, 4, DigitalIn);
         }},
        {"RegisteringTheSamePinTwiceSucceedsOnlyTheFirstTime",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             registeringTheSamePinTwiceSucceedsOnlyTheFirstTime(test, 1, AnalogIn);
             EXPECT_TRUE(test.module_->registerService(1, AnalogOut));
         }},

        {"AnUnknownPortIsLoggedOncePerLookupAndTheModuleIsStillBuilt",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             EXPECT_EQ(loggedLines(test.recorder_), unknownPortLines("DI8", "DO8"));
             EXPECT_EQ(test.station_.buffersHeld(), 2);
         },
         kMissingPosition},
        {"UnknownPortsAreLoggedOncePerLookupAndNeverReadOrWritten",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             EXPECT_EQ(loggedLines(test.recorder_), unknownPortLines("AI32", "AQ32"));

             neitherReadNorWritten(test, {0, 1}, {0, 1}, 1);
         },
         kMissingPosition},
        {"PortsThatCouldNotBeFoundAreNeitherReadNorWritten",
         &kDigital,
         {0xFF},
         [](ModuleBehaviour& test) {
             neitherReadNorWritten(test, {0}, {0}, 1);
             EXPECT_EQ(test.station_.outputsInGds(1), std::vector<uint8_t>{0x00});
         },
         kMissingPosition},

        {"PinsOutsideTheModuleAreNeitherReadNorWritten",
         &kDigital,
         {0xFF},
         [](ModuleBehaviour& test) {
             neitherReadNorWritten(test, {8, -1}, {8, -1, 40}, 1);
         }},
        {"Channel2AndMinus1AreNeitherReadNorWrittenAndNothingIsLogged",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             orbel::Recorder recorder;
             neitherReadNorWritten(test, {2, -1}, {-1, 2}, 5);
             EXPECT_EQ(test.station_.outputsInGds(1),
                       (std::vector<uint8_t>{0x00, 0x00, 0x00, 0x00}));
             EXPECT_TRUE(recorder.logs().empty());
         }},

        {"Pins0To7AreAvailableAndPin8AndMinus1AreNot",
         &kDigital,
         {},
         [](ModuleBehaviour& test) { pinsAvailable(test, allDigitalPins(), 8, AnalogIn); }},
        {"Pins0And1AreAvailableAndPin2AndMinus1AreNot",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             pinsAvailable(test, {{0, AnalogIn}, {1, AnalogOut}}, 2, DigitalIn);
         }},

        {"WritingPin3ThenPin5LeavesTheOutputByteAt0x28",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             writesLeave(test, {{3, 1}, {5, 1}}, {0x28});
         }},
        {"ClearingPin3After3And5LeavesTheOutputByteAt0x20",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             writesLeave(test, {{3, 1}, {5, 1}, {3, 0}}, {0x20});
         }},
        {"EachChannelIsWrittenOnItsOwn",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             writesLeave(test, {{0, 0x1234}, {1, 0xABCD}, {0, 0x0102}}, {0x01, 0x02, 0xAB, 0xCD});
         }},

        {"RegisteringPin2LogsTheServiceAsNotAvailableAndFails",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             expectOneLine(notAvailable(AnalogIn),
                           [&] { EXPECT_FALSE(test.module_->registerService(2, AnalogIn)); });
         }},
        {"AnUnavailablePinCountsAsTakenWithALogLine",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             expectOneLine(notAvailable(DigitalOut), [&] {
                 EXPECT_TRUE(test.module_->isServiceAlreadyRegistered(0, DigitalOut));
             });
         }},

        {"UnavailablePinsAndRestartNeverCountAsTakenAndCannotBeRegistered",
         &kDigital,
         {},
         [](ModuleBehaviour& test) {
             INumberedPinModule& module = *test.module_;
             expectNoLine([&] {
                 EXPECT_FALSE(module.isServiceAlreadyRegistered(8, DigitalIn));
                 EXPECT_FALSE(module.isServiceAlreadyRegistered(0, RestartDevice));
                 EXPECT_FALSE(module.registerService(0, RestartDevice));
                 EXPECT_FALSE(module.isServiceAlreadyRegistered(0, RestartDevice));
                 EXPECT_FALSE(module.registerService(8, DigitalIn));
                 EXPECT_FALSE(module.registerService(-1, DigitalOut));
             });
         }},
        {"RestartCountsAsTakenAndCannotBeRegisteredWithoutALogLine",
         &kAnalog,
         {},
         [](ModuleBehaviour& test) {
             expectNoLine([&] {
                 EXPECT_TRUE(test.module_->isServiceAlreadyRegistered(0, RestartDevice));
                 EXPECT_FALSE(test.module_->registerService(0, RestartDevice));
             });
         }},
    };
}

std::vector<ModuleCase> casesOf(const TerminalModule& module) {
    std::vector<ModuleCase> result;
    for (ModuleCase& row : cases()) {
        if (row.module == &module) {
            result.push_back(std::move(row));
        }
    }
    return result;
}

}  // namespace

TEST_P(ModuleBehaviour, Case) {
    GetParam().check(*this);
}

INSTANTIATE_TEST_SUITE_P(DigitalModule, ModuleBehaviour, testing::ValuesIn(casesOf(kDigital)),
                         caseName);
INSTANTIATE_TEST_SUITE_P(AnalogModule, ModuleBehaviour, testing::ValuesIn(casesOf(kAnalog)),
                         caseName);
