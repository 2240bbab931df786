// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "hosting/DriverConfig.h"
#include "hosting/LoggedLine.h"

// The vocabulary the rows of the fault matrix are written in: the platform calls, the driver's
// failure lines, the driver under test, and the row itself.
namespace faultmatrix {

using hosting::DriverConfig;
using hosting::LoggedLine;

inline constexpr const char* kGetBuffer = "ArpPlcIo_GetBufferPtrByBufferID";
inline constexpr const char* kRelease = "ArpPlcIo_ReleaseGdsBuffer";
inline constexpr const char* kOffset = "ArpPlcGds_GetVariableOffset";
inline constexpr const char* kBeginRead = "ArpPlcGds_BeginRead";
inline constexpr const char* kEndRead = "ArpPlcGds_EndRead";
inline constexpr const char* kBeginWrite = "ArpPlcGds_BeginWrite";
inline constexpr const char* kEndWrite = "ArpPlcGds_EndWrite";
inline constexpr const char* kReadInputs = "ArpPlcAxio_ReadFromAxioToGds";
inline constexpr const char* kWriteOutputs = "ArpPlcAxio_WriteFromGdsToAxio";
inline constexpr const char* kLastError = "ArpPlc_GetLastError";
inline constexpr const char* kSetHandler = "ArpPlcDomain_SetHandler";

inline constexpr const char* kNoBuffer = "Failed to get pointer to gds buffer: %s";
inline constexpr const char* kNoRelease = "Can't release buffer: %s";
inline constexpr const char* kNoOffset = "Can't get offset to port: %s";
inline constexpr const char* kNoBeginRead = "Can't begin read: %s";
inline constexpr const char* kNoBeginWrite = "Can't begin write: %s";
inline constexpr const char* kNoUnlock = "Can't unlock buffer: %s";
inline constexpr const char* kRestartNotice =
    "CPLCNext: Device restart requested from Runtime, going for reboot now.";
inline constexpr const char* kNotAttached =
    "CPLCNext: Not attached to the PLCnext runtime (loading the Arp system module failed); the "
    "driver does not start.";

// What the virtual controller reports for a call on a handle that was never acquired, and for a
// Begin by a thread that still holds the lock an End failed to give back.
inline constexpr const char* kNullOffsetHandle = "ArpPlcGds_GetVariableOffset: pBuffer is null";
inline constexpr const char* kNullReleaseHandle = "ArpPlcIo_ReleaseGdsBuffer: pBuffer is null";
inline constexpr const char* kReadLockStillHeld =
    "ArpPlcGds_BeginRead: the calling thread already holds a lock on buffer '1:IN'";
inline constexpr const char* kWriteLockStillHeld =
    "ArpPlcGds_BeginWrite: the calling thread already holds a lock on buffer '1:OUT'";

inline constexpr const char* kBothReleased = "both frame buffers released, thread ended";

// The error texts of a failed End of the input and of the output frame.
inline constexpr const char* kInUnlockTimedOut = "IN frame unlock timed out";
inline constexpr const char* kOutUnlockTimedOut = "OUT frame unlock timed out";

// The driver under test. Digital: input pin 3 (event 10), outputs pin 5 (event 20, initial
// value 1) and pin 6 (event 21, initial value 0), restart (event 90). Analog: input channel 0
// (event 30), output channel 1 (event 40, initial value 5.0 = word 15000), restart (event 90).
inline constexpr uint32_t kDigitalIn = 10;
inline constexpr uint32_t kPin5 = 20;
inline constexpr uint32_t kPin6 = 21;
inline constexpr uint32_t kAnalogIn = 30;
inline constexpr uint32_t kChannel1 = 40;
inline constexpr uint32_t kRestart = 90;
inline constexpr uint32_t kUnsubscribed = 77;

DriverConfig digitalRecords();
DriverConfig analogRecords();

using Payload = std::vector<uint8_t>;
using Publications = std::vector<std::pair<uint32_t, Payload>>;

// A failure line of `format` with the platform's error text in place of its "%s".
LoggedLine failure(const char* format, const std::string& error);
LoggedLine notice(const char* text);

// A failed End leaves its frame's lock with the thread, so the thread's next Begin of that frame
// is refused: the End's failure line, then the Begin's.
std::vector<LoggedLine> readLockKept();
std::vector<LoggedLine> writeLockKept();

class Scenario;

// One thing a row does to its driver, or checks on the way.
using Step = std::function<void(Scenario&)>;

// The failure a row injects: the platform call, the place the driver makes it, and the error text
// the controller reports for it (none where the call is made to misbehave otherwise).
struct InjectedFault {
    std::string call = {};
    std::string site = {};
    std::string error = {};
};

// A row's behaviour in words, for the printed matrix's columns: the neutral result, what happens
// afterwards, and what teardown releases. Documentation only, never compared with anything: the
// row's steps, log and stops are what the test checks, and these words say what they show.
struct RowNotes {
    std::string neutral = {};
    std::string next = {};
    std::string teardown = kBothReleased;
};

// The notes of a row whose End of the output frame fails on the host thread: the thread keeps the
// lock, so the copy to the bus fails, and the next event's Begin is refused while its End frees
// the lock. `gds` is what the frame then holds, `bus` what the bus shows ("bus keeps 0x20"),
// `nextEvent` how the next event is named and `after` what the one after it writes.
RowNotes outputLockKept(const std::string& gds, const std::string& bus,
                        const std::string& nextEvent, const std::string& after);

// One row of the matrix. Its steps drive the driver to the call site, inject the failure and go
// on past it, checking the neutral result and what follows.
struct FaultRow {
    std::string name = {};  // the call and the place, as the test case is named
    InjectedFault fault = {};
    std::vector<Step> steps = {};
    std::vector<LoggedLine> log =
        {};  // every line after the version line, in order, teardown included
    RowNotes notes = {};
    std::vector<std::string> stops = {};  // stopWithError messages, in order
    int buffersKept = 0;                  // buffers the platform still holds after teardown
};

// How a test runner shows a row: its call and place.
void PrintTo(const FaultRow& row, std::ostream* out);

}  // namespace faultmatrix
