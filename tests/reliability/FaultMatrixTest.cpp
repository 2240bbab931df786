// Every platform call the driver makes, failed at every place the driver makes it. Each row
// states the log line the failure gives (with the error text the controller was made to report),
// the neutral result, the balance of Begin and End calls, what teardown still releases, and how
// the driver goes on. The test prints the whole matrix, so that a reader sees every row.
//
// A fault fails the next calls of a function, so where a constructor or destructor calls the same
// function twice (buffer acquisition, port lookup, release) the second call fails only together
// with the first; those rows fail both.

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstring>
#include <functional>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "ArpModuleLoader.h"
#include "ChildProcess.h"
#include "DriverConfig.h"
#include "DriverRig.h"
#include "LoggedLine.h"
#include "PLCNext.h"
#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"
#include "orbel/Recorder.h"
#include "vplc/Plant.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"
#include "vplc/VirtualClock.h"

using reliability::DriverRig;
using reliability::LoggedLine;
using testsupport::DriverConfig;
using vplc::Fault;
using vplc::Runtime;

namespace {

constexpr const char* kGetBuffer = "ArpPlcIo_GetBufferPtrByBufferID";
constexpr const char* kRelease = "ArpPlcIo_ReleaseGdsBuffer";
constexpr const char* kOffset = "ArpPlcGds_GetVariableOffset";
constexpr const char* kBeginRead = "ArpPlcGds_BeginRead";
constexpr const char* kEndRead = "ArpPlcGds_EndRead";
constexpr const char* kBeginWrite = "ArpPlcGds_BeginWrite";
constexpr const char* kEndWrite = "ArpPlcGds_EndWrite";
constexpr const char* kReadInputs = "ArpPlcAxio_ReadFromAxioToGds";
constexpr const char* kWriteOutputs = "ArpPlcAxio_WriteFromGdsToAxio";
constexpr const char* kLastError = "ArpPlc_GetLastError";
constexpr const char* kSetHandler = "ArpPlcDomain_SetHandler";

constexpr const char* kNoBuffer = "Failed to get pointer to gds buffer: %s";
constexpr const char* kNoRelease = "Can't release buffer: %s";
constexpr const char* kNoOffset = "Can't get offset to port: %s";
constexpr const char* kNoBeginRead = "Can't begin read: %s";
constexpr const char* kNoBeginWrite = "Can't begin write: %s";
constexpr const char* kNoUnlock = "Can't unlock buffer: %s";
constexpr const char* kRestartNotice =
    "CPLCNext: Device restart requested from Runtime, going for reboot now.";
constexpr const char* kNotAttached =
    "CPLCNext: Not attached to the PLCnext runtime (loading the Arp system module failed); the "
    "driver does not start.";

// What the virtual controller reports for a call on a handle that was never acquired, and for a
// Begin by a thread that still holds the lock an End failed to give back.
constexpr const char* kNullOffsetHandle = "ArpPlcGds_GetVariableOffset: pBuffer is null";
constexpr const char* kNullReleaseHandle = "ArpPlcIo_ReleaseGdsBuffer: pBuffer is null";
constexpr const char* kReadLockStillHeld =
    "ArpPlcGds_BeginRead: the calling thread already holds a lock on buffer '1:IN'";
constexpr const char* kWriteLockStillHeld =
    "ArpPlcGds_BeginWrite: the calling thread already holds a lock on buffer '1:OUT'";

// The driver under test. Digital: input pin 3 (event 10), outputs pin 5 (event 20, initial
// value 1) and pin 6 (event 21, initial value 0), restart (event 90). Analog: input channel 0
// (event 30), output channel 1 (event 40, initial value 5.0 = word 15000), restart (event 90).
constexpr uint32_t kDigitalIn = 10;
constexpr uint32_t kPin5 = 20;
constexpr uint32_t kPin6 = 21;
constexpr uint32_t kAnalogIn = 30;
constexpr uint32_t kChannel1 = 40;
constexpr uint32_t kRestart = 90;
constexpr uint32_t kUnsubscribed = 77;

DriverConfig digitalRecords() {
    return DriverConfig::digital(DriverRig::kDigitalPosition)
        .digitalIn(kDigitalIn, "3")
        .digitalOut(kPin5, "5", "1")
        .digitalOut(kPin6, "6", "0")
        .restart(kRestart);
}

DriverConfig analogRecords() {
    return DriverConfig::analog(DriverRig::kAnalogPosition)
        .analogIn(kAnalogIn, "0")
        .analogOut(kChannel1, "1", "5")
        .restart(kRestart);
}

using Payload = std::vector<uint8_t>;
using Publications = std::vector<std::pair<uint32_t, Payload>>;

Payload floatBytes(float value) {
    Payload bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

LoggedLine failure(const char* format, const std::string& error) {
    std::string text = format;
    text.replace(text.find("%s"), 2, error);
    return {2, format, text};
}

LoggedLine notice(const char* text) {
    return {4, text, text};
}

// One row of the matrix. `run` drives the driver to the call site, injects the failure and goes
// on past it; its own expectations check the neutral result and what follows.
struct FaultRow;

// The row's driver on the rig, with the shorthand the rows are written in.
class Scenario {
public:
    Scenario(const FaultRow& row, DriverRig& rig) : row_(row), rig_(rig) {}

    void createDigital() {
        rig_.create(digitalRecords());
        rig_.plant().setDigitalInput(DriverRig::kDigitalPosition, 3, true);
    }
    void createAnalog() {
        rig_.create(analogRecords());
        rig_.plant().setAnalogInput(DriverRig::kAnalogPosition, 0, 30000);
    }
    void startDigital() {
        createDigital();
        initialize();
        passGate();
    }
    void startAnalog() {
        createAnalog();
        initialize();
        passGate();
    }
    void initialize() { rig_.initialize(); }
    void passGate() { rig_.passGate(); }

    // Arms the row's failure: the next call (or the next `count` calls) of the row's function
    // fails with the row's error text.
    void failNext();
    void failTimes(int count);
    void fail(const char* function, const Fault& fault);

    // What the driver published since the last call.
    Publications takePublished() {
        Publications since;
        const auto all = rig_.recorder().published();
        for (std::size_t i = taken_; i < all.size(); ++i) {
            since.emplace_back(all[i].id, all[i].bytes);
        }
        taken_ = all.size();
        return since;
    }

    uint8_t digitalOnBus() const {
        return rig_.plant().digitalOutputsOnBus(DriverRig::kDigitalPosition);
    }
    uint8_t digitalInGds() const {
        return rig_.plant().outputsInGds(DriverRig::kDigitalPosition).at(0);
    }
    uint16_t analogOnBus(int channel) const {
        return rig_.plant().analogOutputOnBus(DriverRig::kAnalogPosition, channel);
    }
    uint16_t analogInGds(int channel) const {
        const auto bytes = rig_.plant().outputsInGds(DriverRig::kAnalogPosition);
        const auto at = static_cast<std::size_t>(2 * channel);
        return static_cast<uint16_t>((bytes.at(at) << 8) | bytes.at(at + 1));
    }

    void setDigitalInput(bool on) {
        rig_.plant().setDigitalInput(DriverRig::kDigitalPosition, 3, on);
    }
    void deliver(uint32_t id, uint8_t value) { rig_.deliver(id, {value}); }
    void deliverFloat(uint32_t id, float value) { rig_.deliverFloat(id, value); }
    int calls(const char* function) const { return rig_.plant().calls(function); }

    // Delivers a restart event and returns the exception it let out, as "type: message".
    std::string restartFailure();

    DriverRig& rig() { return rig_; }

private:
    const FaultRow& row_;
    DriverRig& rig_;
    std::size_t taken_ = 0;
};

struct FaultRow {
    std::string call = {};
    std::string site = {};
    std::string error = {};  // the error text the controller reports for the injected failure
    std::vector<LoggedLine> log =
        {};  // every line after the version line, in order, teardown included
    std::string neutral = {};
    std::string teardown = {};
    std::string next = {};
    std::function<void(Scenario&)> run = {};
    std::vector<std::string> stops = {};  // stopWithError messages, in order
    int buffersKept = 0;                  // buffers the platform still holds after teardown
};

void Scenario::failNext() {
    fail(row_.call.c_str(), Fault::next(row_.error));
}

void Scenario::failTimes(int count) {
    fail(row_.call.c_str(), Fault::times(count, row_.error));
}

void Scenario::fail(const char* function, const Fault& fault) {
    rig_.plant().inject(function, fault);
}

std::string Scenario::restartFailure() {
    try {
        rig_.deliver(kRestart, {1});
    } catch (const Arp::System::Commons::ArgumentException& e) {
        return "ArgumentException: " + e.GetMessage();
    } catch (const Arp::System::Commons::InvalidOperationException& e) {
        return "InvalidOperationException: " + e.GetMessage();
    } catch (const Arp::System::Commons::InvalidCastException& e) {
        return "InvalidCastException: " + e.GetMessage();
    } catch (const Arp::Exception& e) {
        return "Arp::Exception: " + e.GetMessage();
    } catch (const std::logic_error&) {
        return "std::logic_error";
    }
    return "";
}

// ---------------------------------------------------------------------------------------------
// The rows. Each names the call, the place, the failure's text, and then what a reader should
// see happen.

const char* const kBothReleased = "both frame buffers released, thread ended";

std::vector<FaultRow> moduleRows() {
    return {
        {
            .call = kGetBuffer,
            .site = "digital module constructor: buffer 1:IN",
            .error = "IN frame not ready",
            .log = {failure(kNoBuffer, "IN frame not ready"), failure(kNoOffset, kNullOffsetHandle),
                    failure(kNoRelease, kNullReleaseHandle)},
            .neutral = "pin 3 (on) is never read and published as 0",
            .teardown = "1:OUT released; releasing the missing 1:IN handle fails and is logged",
            .next = "outputs unaffected: InitVal and events reach the bus",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failNext();
                    s.initialize();
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    EXPECT_EQ(s.calls(kBeginRead), 0);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
        },
        {
            .call = kGetBuffer,
            .site = "digital module constructor: buffers 1:IN and 1:OUT",
            .error = "GDS not configured",
            .log = {failure(kNoBuffer, "GDS not configured"),
                    failure(kNoBuffer, "GDS not configured"), failure(kNoOffset, kNullOffsetHandle),
                    failure(kNoOffset, kNullOffsetHandle), failure(kNoRelease, kNullReleaseHandle),
                    failure(kNoRelease, kNullReleaseHandle)},
            .neutral =
                "no frame is touched: pin 3 published as 0, InitVal and events write nothing",
            .teardown = "both releases of the missing handles fail and are logged",
            .next = "the driver runs without process data; events are accepted",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failTimes(2);
                    s.initialize();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalInGds(), 0x00);
                    EXPECT_EQ(s.digitalOnBus(), 0x00);
                    EXPECT_EQ(s.calls(kBeginRead) + s.calls(kBeginWrite), 0);
                },
        },
        {
            .call = kGetBuffer,
            .site = "analog module constructor: buffer 1:IN",
            .error = "IN frame locked by firmware update",
            .log = {failure(kNoBuffer, "IN frame locked by firmware update"),
                    failure(kNoOffset, kNullOffsetHandle), failure(kNoRelease, kNullReleaseHandle)},
            .neutral = "channel 0 (10.0) is never read and published as 0.0",
            .teardown = "1:OUT released; releasing the missing 1:IN handle fails and is logged",
            .next = "outputs unaffected: InitVal and events reach the bus",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.failNext();
                    s.initialize();
                    EXPECT_EQ(s.analogOnBus(1), 15000);
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogOnBus(1), 7500);
                },
        },
        {
            .call = kGetBuffer,
            .site = "analog module constructor: buffers 1:IN and 1:OUT",
            .error = "GDS not configured",
            .log = {failure(kNoBuffer, "GDS not configured"),
                    failure(kNoBuffer, "GDS not configured"), failure(kNoOffset, kNullOffsetHandle),
                    failure(kNoOffset, kNullOffsetHandle), failure(kNoRelease, kNullReleaseHandle),
                    failure(kNoRelease, kNullReleaseHandle)},
            .neutral = "no frame is touched: 0.0 published, InitVal and events write nothing",
            .teardown = "both releases of the missing handles fail and are logged",
            .next = "the driver runs without process data; events are accepted",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.failTimes(2);
                    s.initialize();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogInGds(1), 0);
                    EXPECT_EQ(s.analogOnBus(1), 0);
                    EXPECT_EQ(s.calls(kBeginRead) + s.calls(kBeginWrite), 0);
                },
        },
        {
            .call = kOffset,
            .site = "digital module constructor: port DI8",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded")},
            .neutral = "pin 3 (on) is never read and published as 0",
            .teardown = kBothReleased,
            .next = "outputs unaffected: InitVal and events reach the bus",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failNext();
                    s.initialize();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    EXPECT_EQ(s.calls(kBeginRead), 0);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
        },
        {
            .call = kOffset,
            .site = "digital module constructor: ports DI8 and DO8",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded"),
                    failure(kNoOffset, "Variable table not loaded")},
            .neutral = "pin 3 published as 0; InitVal and events write nothing, bus stays 0x00",
            .teardown = kBothReleased,
            .next = "the driver runs without process data; events are accepted",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failTimes(2);
                    s.initialize();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalInGds(), 0x00);
                    EXPECT_EQ(s.digitalOnBus(), 0x00);
                    EXPECT_EQ(s.calls(kBeginRead) + s.calls(kBeginWrite), 0);
                },
        },
        {
            .call = kOffset,
            .site = "analog module constructor: port AI32",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded")},
            .neutral = "channel 0 (10.0) is never read and published as 0.0",
            .teardown = kBothReleased,
            .next = "outputs unaffected: InitVal and events reach the bus",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.failNext();
                    s.initialize();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    EXPECT_EQ(s.calls(kBeginRead), 0);
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogOnBus(1), 7500);
                },
        },
        {
            .call = kOffset,
            .site = "analog module constructor: ports AI32 and AQ32",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded"),
                    failure(kNoOffset, "Variable table not loaded")},
            .neutral = "0.0 published; InitVal and events write nothing, bus stays 0",
            .teardown = kBothReleased,
            .next = "the driver runs without process data; events are accepted",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.failTimes(2);
                    s.initialize();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogInGds(1), 0);
                    EXPECT_EQ(s.analogOnBus(1), 0);
                    EXPECT_EQ(s.calls(kBeginRead) + s.calls(kBeginWrite), 0);
                },
        },
    };
}

std::vector<FaultRow> initialisationRows() {
    return {
        {
            .call = kReadInputs,
            .site = "initialize: input image before registration",
            .error = "Axioline bus not running",
            .log = {},
            .neutral = "result ignored, nothing logged; registration goes on",
            .teardown = kBothReleased,
            .next = "the thread's initial publication copies the inputs itself: pin 3 published 1",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failNext();
                    s.initialize();
                    EXPECT_TRUE(s.rig().threadStarted());
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
        {
            .call = kBeginWrite,
            .site = "initDigitalOut: InitVal of pin 5",
            .error = "OUT frame busy",
            .log = {failure(kNoBeginWrite, "OUT frame busy")},
            .neutral = "EndWrite still called; nothing written, but pin 5's 1 is remembered and "
                       "pin 6's initial write carries it: 0x20",
            .teardown = kBothReleased,
            .next = "the next event (pin 6 <- 1) puts 0x60 on the bus",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failNext();
                    s.initialize();
                    EXPECT_EQ(s.calls(kBeginWrite), 2);
                    EXPECT_EQ(s.digitalInGds(), 0x20);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
        },
        {
            .call = kEndWrite,
            .site = "initDigitalOut: InitVal of pin 5",
            .error = "OUT frame unlock timed out",
            .log = {failure(kNoUnlock, "OUT frame unlock timed out"),
                    failure(kNoBeginWrite, kWriteLockStillHeld)},
            .neutral = "GDS holds 0x20; pin 6's initial write is refused while the host thread "
                       "still holds the lock, and its End frees it",
            .teardown = kBothReleased,
            .next = "the initial copy brings 0x20 to the bus; the next event (pin 6 <- 1) gives "
                    "0x60",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failNext();
                    s.initialize();
                    EXPECT_EQ(s.rig().plant().nestedBegins(), 1);
                    EXPECT_EQ(s.digitalInGds(), 0x20);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
        },
        {
            .call = kBeginWrite,
            .site = "initAnalogOut: InitVal of channel 1",
            .error = "OUT frame busy",
            .log = {failure(kNoBeginWrite, "OUT frame busy")},
            .neutral = "EndWrite still called; GDS and bus keep 0",
            .teardown = kBothReleased,
            .next = "the next event (2.5) is written: 7500 on the bus",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.failNext();
                    s.initialize();
                    EXPECT_EQ(s.analogInGds(1), 0);
                    EXPECT_EQ(s.analogOnBus(1), 0);
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogOnBus(1), 7500);
                },
        },
        {
            .call = kEndWrite,
            .site = "initAnalogOut: InitVal of channel 1",
            .error = "OUT frame unlock timed out",
            .log = {failure(kNoUnlock, "OUT frame unlock timed out"),
                    failure(kNoBeginWrite, kWriteLockStillHeld)},
            .neutral = "GDS holds 15000; the copy to the bus fails while the host thread still "
                       "holds the lock, bus 0",
            .teardown = kBothReleased,
            .next = "next event: its Begin is refused, its End frees the lock, its copy brings "
                    "15000; the one after is written (7500)",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.failNext();
                    s.initialize();
                    EXPECT_EQ(s.analogInGds(1), 15000);
                    EXPECT_EQ(s.analogOnBus(1), 0);
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogOnBus(1), 15000);
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogOnBus(1), 7500);
                },
        },
        {
            .call = kWriteOutputs,
            .site = "initialize: initial output image",
            .error = "Axioline bus not running",
            .log = {},
            .neutral = "result ignored, nothing logged; GDS holds 0x20, bus 0x00; thread starts",
            .teardown = kBothReleased,
            .next = "the next output event's copy brings both outputs: 0x60",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.failNext();
                    s.initialize();
                    EXPECT_TRUE(s.rig().threadStarted());
                    EXPECT_EQ(s.digitalInGds(), 0x20);
                    EXPECT_EQ(s.digitalOnBus(), 0x00);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
        },
    };
}

std::vector<FaultRow> scanRows() {
    return {
        {
            .call = kReadInputs,
            .site = "run: start of the initial publication",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored, nothing logged; the stale image publishes pin 3 as 0",
            .teardown = kBothReleased,
            .next = "the next scan sees pin 3 on and publishes 1",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.rig().plant().setDigitalInput(DriverRig::kDigitalPosition, 3, false);
                    s.initialize();
                    s.setDigitalInput(true);
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
        {
            .call = kReadInputs,
            .site = "run: start of a steady scan",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored, nothing logged; pin 3 switched off is not seen, nothing "
                       "published",
            .teardown = kBothReleased,
            .next = "the next scan publishes 0",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                    s.setDigitalInput(false);
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), Publications{});
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                },
        },
        {
            .call = kBeginRead,
            .site = "readDigital: initial publication",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; pin 3 (on) published as 0",
            .teardown = kBothReleased,
            .next = "the next scan publishes 1",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.initialize();
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
        {
            .call = kBeginRead,
            .site = "readDigital: steady scan",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; the read gives 0, published as a change",
            .teardown = kBothReleased,
            .next = "the next scan publishes 1 again",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.takePublished();
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
        {
            .call = kEndRead,
            .site = "readDigital: initial publication",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the value read is kept: pin 3 published as 1",
            .teardown = kBothReleased,
            .next = "next scan: the scan thread still holds the lock, its read is refused (0 "
                    "published) and its End frees the lock; the scan after publishes 1",
            .run =
                [](Scenario& s) {
                    s.createDigital();
                    s.initialize();
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                    EXPECT_EQ(s.rig().plant().openLocks(), 1);
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
        {
            .call = kEndRead,
            .site = "readDigital: steady scan",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the value read is kept: pin 3 switched off is published as 0",
            .teardown = kBothReleased,
            .next = "next scan: its read is refused and gives 0 (unchanged, nothing published), "
                    "its End frees the lock; pin 3 switched on then is published as 1",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.takePublished();
                    s.setDigitalInput(false);
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.setDigitalInput(true);
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), Publications{});
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
        {
            .call = kBeginRead,
            .site = "readAnalog: initial publication",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; channel 0 (10.0) published as 0.0",
            .teardown = kBothReleased,
            .next = "the next scan publishes 10.0",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.initialize();
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(10.0f)}}));
                },
        },
        {
            .call = kBeginRead,
            .site = "readAnalog: steady scan",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; the read gives 0.0, published as a change",
            .teardown = kBothReleased,
            .next = "the next scan publishes 10.0 again",
            .run =
                [](Scenario& s) {
                    s.startAnalog();
                    s.takePublished();
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(10.0f)}}));
                },
        },
        {
            .call = kEndRead,
            .site = "readAnalog: initial publication",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the word read is kept: 10.0 published",
            .teardown = kBothReleased,
            .next = "next scan: its read is refused (0.0 published) and its End frees the lock; "
                    "the scan after publishes 10.0",
            .run =
                [](Scenario& s) {
                    s.createAnalog();
                    s.initialize();
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(10.0f)}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(10.0f)}}));
                },
        },
        {
            .call = kEndRead,
            .site = "readAnalog: steady scan",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the word read is kept: a change to 2.5 is published",
            .teardown = kBothReleased,
            .next = "next scan: its read is refused (0.0 published) and its End frees the lock; "
                    "the scan after publishes 2.5",
            .run =
                [](Scenario& s) {
                    s.startAnalog();
                    s.takePublished();
                    s.rig().plant().setAnalogInput(DriverRig::kAnalogPosition, 0, 7500);
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(2.5f)}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(0.0f)}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kAnalogIn, floatBytes(2.5f)}}));
                },
        },
        {
            .call = kLastError,
            .site = "any failure line (here: BeginRead in a steady scan)",
            .error = "error text replaced",
            .log = {failure(kNoBeginRead, "error text replaced")},
            .neutral = "the line carries whatever ArpPlc_GetLastError hands out; 0 published",
            .teardown = kBothReleased,
            .next = "the next scan publishes 1 again",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.takePublished();
                    s.fail(kBeginRead, Fault::next("IN frame being refreshed"));
                    s.failNext();
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {0}}}));
                    s.passGate();
                    EXPECT_EQ(s.takePublished(), (Publications{{kDigitalIn, {1}}}));
                },
        },
    };
}

std::vector<FaultRow> eventRows() {
    return {
        {
            .call = kBeginWrite,
            .site = "writeDigital: output event (pin 5 <- 0)",
            .error = "OUT frame busy",
            .log = {failure(kNoBeginWrite, "OUT frame busy")},
            .neutral = "EndWrite still called; GDS and bus keep 0x20",
            .teardown = kBothReleased,
            .next = "pin 5's 0 is remembered: the next event (pin 6 <- 1) puts 0x40 on the bus",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.failNext();
                    s.deliver(kPin5, 0);
                    EXPECT_EQ(s.digitalInGds(), 0x20);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x40);
                },
        },
        {
            .call = kEndWrite,
            .site = "writeDigital: output event (pin 5 <- 0)",
            .error = "OUT frame unlock timed out",
            .log = {failure(kNoUnlock, "OUT frame unlock timed out"),
                    failure(kNoBeginWrite, kWriteLockStillHeld)},
            .neutral = "GDS holds 0x00; the copy to the bus fails while the host thread still "
                       "holds the lock, bus keeps 0x20",
            .teardown = kBothReleased,
            .next = "next event: its Begin is refused, its End frees the lock, its copy brings "
                    "0x00; the one after is written (0x40)",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.failNext();
                    s.deliver(kPin5, 0);
                    EXPECT_EQ(s.digitalInGds(), 0x00);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x00);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x40);
                },
        },
        {
            .call = kBeginWrite,
            .site = "writeAnalog: output event (channel 1 <- 2.5)",
            .error = "OUT frame busy",
            .log = {failure(kNoBeginWrite, "OUT frame busy")},
            .neutral = "EndWrite still called; GDS and bus keep 15000",
            .teardown = kBothReleased,
            .next = "the next event (2.5) is written: 7500 on the bus",
            .run =
                [](Scenario& s) {
                    s.startAnalog();
                    s.failNext();
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogInGds(1), 15000);
                    EXPECT_EQ(s.analogOnBus(1), 15000);
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogOnBus(1), 7500);
                },
        },
        {
            .call = kEndWrite,
            .site = "writeAnalog: output event (channel 1 <- 2.5)",
            .error = "OUT frame unlock timed out",
            .log = {failure(kNoUnlock, "OUT frame unlock timed out"),
                    failure(kNoBeginWrite, kWriteLockStillHeld)},
            .neutral = "GDS holds 7500; the copy to the bus fails while the host thread still "
                       "holds the lock, bus keeps 15000",
            .teardown = kBothReleased,
            .next = "next event (1.0): its Begin is refused, its End frees the lock, its copy "
                    "brings 7500; the one after is written (3000)",
            .run =
                [](Scenario& s) {
                    s.startAnalog();
                    s.failNext();
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogInGds(1), 7500);
                    EXPECT_EQ(s.analogOnBus(1), 15000);
                    s.deliverFloat(kChannel1, 1.0f);
                    EXPECT_EQ(s.analogOnBus(1), 7500);
                    s.deliverFloat(kChannel1, 1.0f);
                    EXPECT_EQ(s.analogOnBus(1), 3000);
                },
        },
        {
            .call = kWriteOutputs,
            .site = "onReceiveEvent: after a digital output event (pin 5 <- 0)",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored, nothing logged; GDS 0x00, bus keeps 0x20",
            .teardown = kBothReleased,
            .next = "the next event (pin 6 <- 1) brings both: 0x40",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.failNext();
                    s.deliver(kPin5, 0);
                    EXPECT_EQ(s.digitalInGds(), 0x00);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x40);
                },
        },
        {
            .call = kWriteOutputs,
            .site = "onReceiveEvent: after an analog output event (channel 1 <- 2.5)",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored, nothing logged; GDS 7500, bus keeps 15000",
            .teardown = kBothReleased,
            .next = "the next event (1.0) is copied: 3000",
            .run =
                [](Scenario& s) {
                    s.startAnalog();
                    s.failNext();
                    s.deliverFloat(kChannel1, 2.5f);
                    EXPECT_EQ(s.analogInGds(1), 7500);
                    EXPECT_EQ(s.analogOnBus(1), 15000);
                    s.deliverFloat(kChannel1, 1.0f);
                    EXPECT_EQ(s.analogOnBus(1), 3000);
                },
        },
        {
            .call = kWriteOutputs,
            .site = "onReceiveEvent: after a restart event",
            .error = "Axioline bus cycle missed",
            .log = {notice(kRestartNotice)},
            .neutral = "result ignored; the restart is made, outputs unchanged",
            .teardown = kBothReleased,
            .next = "the next output event is written and copied",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.failNext();
                    s.deliver(kRestart, 1);
                    EXPECT_EQ(Runtime::restarts(), 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
        },
        {
            .call = kWriteOutputs,
            .site = "onReceiveEvent: after an unsubscribed event",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored; the event is reported, outputs unchanged",
            .teardown = kBothReleased,
            .next = "the next output event is written and copied",
            .run =
                [](Scenario& s) {
                    s.startDigital();
                    s.failNext();
                    s.deliver(kUnsubscribed, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x20);
                    s.deliver(kPin6, 1);
                    EXPECT_EQ(s.digitalOnBus(), 0x60);
                },
            .stops = {"Unsubscribed event received"},
        },
    };
}

// A restart whose service cannot be reached, or refuses: the notice is logged first, the
// exception reaches the host, nothing is copied to the bus, and no service object is left.
std::function<void(Scenario&)> failedRestart(const std::function<void(Scenario&)>& arm,
                                             const std::string& expected) {
    return [arm, expected](Scenario& s) {
        s.startDigital();
        const int copies = s.calls(kWriteOutputs);
        arm(s);
        EXPECT_EQ(s.restartFailure(), expected);
        EXPECT_EQ(s.calls(kWriteOutputs), copies);
        EXPECT_EQ(Runtime::restarts(), 0);
        EXPECT_EQ(Runtime::liveServices(), 0);
        Runtime::setServiceLookup(Runtime::Lookup::Normal);
        s.deliver(kRestart, 1);
        EXPECT_EQ(Runtime::restarts(), 1);
        EXPECT_EQ(s.calls(kWriteOutputs), copies + 1);
    };
}

std::function<void(Scenario&)> lookup(Runtime::Lookup mode) {
    return [mode](Scenario&) { Runtime::setServiceLookup(mode); };
}

std::vector<FaultRow> restartRows() {
    const std::string restartAgain = "the next restart event restarts once";
    const std::string neutral = "exception reaches the host; no restart, no copy to the bus";
    return {
        {
            .call = std::string(Runtime::kGetService),
            .site = "restartDevice: restart event",
            .error = "RSC layer not ready",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (Arp::Exception)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart([](Scenario& s) { s.failNext(); },
                                 "Arp::Exception: RSC layer not ready"),
        },
        {
            .call = std::string(Runtime::kGetService) + " (empty provider name)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (ArgumentException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(lookup(Runtime::Lookup::EmptyProviderName),
                                 "ArgumentException: Service does not specify a service provider"),
        },
        {
            .call = std::string(Runtime::kGetService) + " (null provider name)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (std::logic_error)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(lookup(Runtime::Lookup::NullProviderName), "std::logic_error"),
        },
        {
            .call = std::string(Runtime::kGetService) + " (no service)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (InvalidOperationException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(
                lookup(Runtime::Lookup::NoService),
                "InvalidOperationException: Could not retrieve service "
                "'Arp::Device::Interface::Services::IDeviceControlService' from service provider "
                "'Arp'."),
        },
        {
            .call = std::string(Runtime::kGetService) + " (service of another type)",
            .site = "restartDevice: restart event",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (InvalidCastException)",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run = failedRestart(
                lookup(Runtime::Lookup::WrongType),
                "InvalidCastException: The service does not implement service interface "
                "'Arp.Device.Interface.Services.IDeviceControlService'."),
        },
        {
            .call = std::string(Runtime::kRestartDevice),
            .site = "restartDevice: the restart operation",
            .error = "Device is busy",
            .log = {notice(kRestartNotice), notice(kRestartNotice)},
            .neutral = neutral + " (Arp::Exception); the service object is still released",
            .teardown = kBothReleased,
            .next = restartAgain,
            .run =
                failedRestart([](Scenario& s) { s.failNext(); }, "Arp::Exception: Device is busy"),
        },
    };
}

std::vector<FaultRow> releaseRows() {
    const std::string neutral = "the destructor goes on; nothing is thrown";
    const std::string next = "the driver is gone; the platform keeps what it could not release";
    const auto destroyAfterStart = [](void (Scenario::*start)(), int failures) {
        return [start, failures](Scenario& s) {
            (s.*start)();
            if (failures == 1) {
                s.failNext();
            } else {
                s.failTimes(failures);
            }
            s.rig().destroy();
            EXPECT_EQ(s.calls(kRelease), 2);
        };
    };
    return {
        {
            .call = kRelease,
            .site = "digital module destructor: buffer 1:OUT (released first)",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "1:IN released, 1:OUT kept by the platform",
            .next = next,
            .run = destroyAfterStart(&Scenario::startDigital, 1),
            .buffersKept = 1,
        },
        {
            .call = kRelease,
            .site = "digital module destructor: buffers 1:OUT and 1:IN",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped"),
                    failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "both kept by the platform",
            .next = next,
            .run = destroyAfterStart(&Scenario::startDigital, 2),
            .buffersKept = 2,
        },
        {
            .call = kRelease,
            .site = "analog module destructor: buffer 1:OUT (released first)",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "1:IN released, 1:OUT kept by the platform",
            .next = next,
            .run = destroyAfterStart(&Scenario::startAnalog, 1),
            .buffersKept = 1,
        },
        {
            .call = kRelease,
            .site = "analog module destructor: buffers 1:OUT and 1:IN",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped"),
                    failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "both kept by the platform",
            .next = next,
            .run = destroyAfterStart(&Scenario::startAnalog, 2),
            .buffersKept = 2,
        },
    };
}

// ---------------------------------------------------------------------------------------------
// The runtime attachment happens once per process, so its rows run in child processes, before
// this process starts any thread. A child reports what it saw as lines, and the parent checks
// them against the row.

struct AttachmentRow {
    std::string call = {};
    std::string site = {};
    std::vector<std::string> printed = {};  // lines the driver writes to standard output
    std::vector<LoggedLine> log = {};
    std::string neutral = {};
    std::string teardown = {};
    std::string next = {};
    std::function<int()> child = {};                // runs the row in the child process
    std::vector<std::string> stops = {};            // of both drivers
    std::map<std::string, std::string> facts = {};  // what the child must report
};

// What a child saw, one fact per line: "log\t<level>\t<format>\t<text>", "stop\t<message>" or
// "fact\t<name>\t<value>". Any other line is the driver's own output.
struct ChildReport {
    std::vector<std::string> printed;
    std::vector<LoggedLine> log;
    std::vector<std::string> stops;
    std::map<std::string, std::string> facts;
};

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields;
    std::stringstream stream(line);
    std::string field;
    while (std::getline(stream, field, '\t')) {
        fields.push_back(field);
    }
    return fields;
}

ChildReport parseReport(const std::string& output) {
    ChildReport report;
    std::stringstream stream(output);
    std::string line;
    while (std::getline(stream, line)) {
        const auto fields = fieldsOf(line);
        if (fields.size() == 4 && fields[0] == "log") {
            report.log.push_back({std::stoi(fields[1]), fields[2], fields[3]});
        } else if (fields.size() == 2 && fields[0] == "stop") {
            report.stops.push_back(fields[1]);
        } else if (fields.size() == 3 && fields[0] == "fact") {
            report.facts[fields[1]] = fields[2];
        } else {
            report.printed.push_back(line);
        }
    }
    return report;
}

void printFact(const std::string& name, int value) {
    std::cout << "fact\t" << name << "\t" << value << "\n";
}

void printRecorded(const orbel::Recorder& recorder) {
    for (const LoggedLine& line : reliability::linesAfterVersion(recorder)) {
        std::cout << "log\t" << line.level << "\t" << line.format << "\t" << line.text << "\n";
    }
    for (const orbel::Stop& stop : recorder.stops()) {
        std::cout << "stop\t" << stop.message << "\n";
    }
}

CSI_base* createDigitalDriver() {
    DriverConfig records = digitalRecords();
    orbel::CallScope creation(nullptr);
    return CreateSiObject(records.params, &records.mappings, &records.services);
}

void initializeDriver(CSI_base& driver) {
    orbel::CallScope scope(&driver);
    driver.initialize();
}

// A load that fails: the first driver stops at once, and so does a second one, without a retry.
int failedAttachmentChild(const std::function<void()>& arm) {
    orbel::Recorder recorder;
    vplc::VirtualClock clock;
    vplc::Plant plant = vplc::Plant::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    arm();
    CSI_base* first = createDigitalDriver();
    initializeDriver(*first);
    printFact("buffersAcquired", plant.calls(kGetBuffer));
    orbel::destroyDriver(first);
    CSI_base* second = createDigitalDriver();
    initializeDriver(*second);
    orbel::destroyDriver(second);
    printFact("loads", static_cast<int>(Runtime::moduleMainCalls().size()));
    printFact("threadsStarted", static_cast<int>(recorder.threadStarts().size()));
    printFact("buffersHeld", plant.buffersHeld());
    printRecorded(recorder);
    return 0;
}

// The handler registered before the driver's (here the child's own) receives the start.
std::mutex startsMutex;
std::condition_variable startsChanged;
int startsSeen = 0;

void previousHandler(PlcOperation operation) {
    if (operation != PlcOperation_StartCold) {
        return;
    }
    std::lock_guard lock(startsMutex);
    ++startsSeen;
    startsChanged.notify_all();
}

int missedStartChild() {
    orbel::Recorder recorder;
    vplc::VirtualClock clock;
    vplc::Plant plant = vplc::Plant::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    ArpPlcDomain_SetHandler(previousHandler);
    vplc::inject(kSetHandler, Fault::next("handler table full"));
    CSI_base* driver = createDigitalDriver();
    std::thread host([driver] { initializeDriver(*driver); });
    {
        std::unique_lock lock(startsMutex);
        startsChanged.wait(lock, [] { return startsSeen > 0; });
    }
    Runtime::waitUntilDelivered();
    {
        std::lock_guard lock(plcStateMutex);
        printFact("startedWhileWaiting", plcStarted ? 1 : 0);
    }
    printFact("threadWhileWaiting", static_cast<int>(recorder.threadStarts().size()));
    PlcOperationHandler(PlcOperation_StartCold);
    host.join();
    clock.settle();
    printFact("threadAfterStart", static_cast<int>(recorder.threadStarts().size()));
    orbel::destroyDriver(driver);
    printFact("buffersHeld", plant.buffersHeld());
    printRecorded(recorder);
    return 0;
}

std::function<int()> failedLoad(std::function<void()> arm) {
    return [arm] { return failedAttachmentChild(arm); };
}

std::function<void()> failNext(std::string_view function, const char* error) {
    return [function, error] { vplc::inject(function, Fault::next(error)); };
}

std::vector<AttachmentRow> attachmentRows() {
    const std::vector<LoggedLine> notAttached = {{2, kNotAttached, kNotAttached},
                                                 {2, kNotAttached, kNotAttached}};
    const std::string neutral = "no module, no GDS buffer, no thread; stopped";
    const std::string teardown = "nothing was acquired";
    const std::string next = "a second driver stops the same way; the load is not retried";
    const std::vector<std::string> stops = {"PLCnext runtime not available",
                                            "PLCnext runtime not available"};
    const std::map<std::string, std::string> facts = {
        {"buffersAcquired", "0"}, {"loads", "1"}, {"threadsStarted", "0"}, {"buffersHeld", "0"}};
    const std::string printed = "occured during call of ArpSystemModule_Load : ";
    return {
        {
            .call = kSetHandler,
            .site = "runtime attachment: registering the start handler",
            .printed = {},
            .log = {},
            .neutral = "the start reaches the handler registered before; initialize waits",
            .teardown = kBothReleased,
            .next = "initialize returns once a start reaches the loader's handler; the driver "
                    "then runs",
            .child = missedStartChild,
            .stops = {},
            .facts = {{"startedWhileWaiting", "0"},
                      {"threadWhileWaiting", "0"},
                      {"threadAfterStart", "1"},
                      {"buffersHeld", "0"}},
        },
        {
            .call = std::string(Runtime::kModuleMain),
            .site = "runtime attachment: loading the system module",
            .printed = {"Exception of type Arp::Exception " + printed + "settings file unreadable"},
            .log = notAttached,
            .neutral = neutral,
            .teardown = teardown,
            .next = next,
            .child = failedLoad(failNext(Runtime::kModuleMain, "settings file unreadable")),
            .stops = stops,
            .facts = facts,
        },
        {
            .call = std::string(Runtime::kModuleMain) + " (no application domain)",
            .site = "runtime attachment: loading the system module",
            .printed = {},
            .log = notAttached,
            .neutral = neutral,
            .teardown = teardown,
            .next = next,
            .child = failedLoad([] { Runtime::setModuleMain(Runtime::MainOutcome::NullDomain); }),
            .stops = stops,
            .facts = facts,
        },
        {
            .call = std::string(Runtime::kLogAssignAppDomain),
            .site = "runtime attachment: binding the log manager",
            .printed = {"Exception of type Arp::Exception " + printed + "log manager unavailable"},
            .log = notAttached,
            .neutral = neutral,
            .teardown = teardown,
            .next = next,
            .child = failedLoad(failNext(Runtime::kLogAssignAppDomain, "log manager unavailable")),
            .stops = stops,
            .facts = facts,
        },
        {
            .call = std::string(Runtime::kRscAssignAppDomain),
            .site = "runtime attachment: binding the RSC manager",
            .printed = {"Exception of type Arp::Exception " + printed + "RSC manager unavailable"},
            .log = notAttached,
            .neutral = neutral,
            .teardown = teardown,
            .next = next,
            .child = failedLoad(failNext(Runtime::kRscAssignAppDomain, "RSC manager unavailable")),
            .stops = stops,
            .facts = facts,
        },
    };
}

// ---------------------------------------------------------------------------------------------
// The matrix as it is printed: one line per row, with what was observed.

struct MatrixLine {
    std::string call;
    std::string site;
    std::string log;
    std::string neutral;
    std::string balance;
    std::string teardown;
    std::string next;
    bool passed = false;
};

std::string describe(const std::vector<LoggedLine>& lines) {
    if (lines.empty()) {
        return "(none)";
    }
    std::string text;
    for (const LoggedLine& line : lines) {
        text += (text.empty() ? "" : " / ") + std::to_string(line.level) + ": " + line.text;
    }
    return text;
}

std::string balanceOf(const vplc::Plant& plant) {
    return "R " + std::to_string(plant.calls(kBeginRead)) + "/" +
           std::to_string(plant.calls(kEndRead)) + ", W " +
           std::to_string(plant.calls(kBeginWrite)) + "/" + std::to_string(plant.calls(kEndWrite));
}

int failedParts() {
    const testing::TestResult* result =
        testing::UnitTest::GetInstance()->current_test_info()->result();
    int failed = 0;
    for (int i = 0; i < result->total_part_count(); ++i) {
        failed += result->GetTestPartResult(i).failed() ? 1 : 0;
    }
    return failed;
}

MatrixLine runAttachmentRow(const AttachmentRow& row) {
    SCOPED_TRACE(row.call + " at " + row.site);
    const int failedBefore = failedParts();
    const testsupport::ChildResult child = testsupport::runInChild(row.child);
    const ChildReport report = parseReport(child.output);
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(report.printed, row.printed);
    EXPECT_EQ(report.log, row.log);
    EXPECT_EQ(report.stops, row.stops);
    EXPECT_EQ(report.facts, row.facts);
    std::string log;
    for (const std::string& line : row.printed) {
        log += "stdout: " + line + " / ";
    }
    log += describe(row.log);
    return {row.call,          row.site,     log,      row.neutral,
            "no frame access", row.teardown, row.next, failedParts() == failedBefore};
}

MatrixLine runRow(const FaultRow& row) {
    SCOPED_TRACE(row.call + " at " + row.site);
    const int failedBefore = failedParts();
    DriverRig rig;
    Scenario scenario(row, rig);
    row.run(scenario);

    const vplc::Plant& plant = rig.plant();
    EXPECT_EQ(plant.openLocks(), 0);
    EXPECT_EQ(plant.calls(kBeginRead), plant.calls(kEndRead));
    EXPECT_EQ(plant.calls(kBeginWrite), plant.calls(kEndWrite));
    const std::string balance = balanceOf(plant);

    rig.destroy();
    // Every buffer the module asked for is given back at teardown, whether it came or not.
    EXPECT_EQ(plant.calls(kRelease), plant.calls(kGetBuffer));
    EXPECT_EQ(plant.buffersHeld(), row.buffersKept);
    EXPECT_EQ(rig.recorder().threadExits().size(), rig.recorder().threadStarts().size());
    EXPECT_EQ(reliability::linesAfterVersion(rig.recorder()), row.log);
    std::vector<std::string> stops;
    for (const orbel::Stop& stop : rig.recorder().stops()) {
        stops.push_back(stop.message);
    }
    EXPECT_EQ(stops, row.stops);
    if (!row.error.empty()) {
        EXPECT_GT(plant.calls(row.call), 0) << "the failing call was never made";
    }
    return {row.call, row.site,     describe(row.log), row.neutral,
            balance,  row.teardown, row.next,          failedParts() == failedBefore};
}

void printMatrix(const std::vector<MatrixLine>& lines) {
    std::ostringstream out;
    out << "\nFault matrix: " << lines.size() << " rows\n\n"
        << "| # | platform call | called from | log lines (level: text) | neutral result | "
           "Begin/End (read, write) | released at teardown | afterwards | ok |\n"
        << "|---|---|---|---|---|---|---|---|---|\n";
    int number = 0;
    for (const MatrixLine& line : lines) {
        out << "| " << ++number << " | " << line.call << " | " << line.site << " | " << line.log
            << " | " << line.neutral << " | " << line.balance << " | " << line.teardown << " | "
            << line.next << " | " << (line.passed ? "yes" : "NO") << " |\n";
    }
    std::cout << out.str() << std::endl;
}

}  // namespace

TEST(FaultMatrix, EveryFailedPlatformCallIsLoggedNeutralBalancedReleasedAndSurvived) {
    // The attachment rows fork, which is sound only before this process has attached to the
    // runtime: until then it has started no thread, and each child attaches afresh.
    ASSERT_TRUE(Runtime::moduleMainCalls().empty());
    std::vector<MatrixLine> matrix;
    for (const AttachmentRow& row : attachmentRows()) {
        matrix.push_back(runAttachmentRow(row));
    }
    for (const auto& rows : {moduleRows(), initialisationRows(), scanRows(), eventRows(),
                             restartRows(), releaseRows()}) {
        for (const FaultRow& row : rows) {
            matrix.push_back(runRow(row));
        }
    }
    printMatrix(matrix);
}
