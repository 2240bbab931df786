// SPDX-License-Identifier: MIT
// The module constructors' acquisition of the GDS frame buffers and of their ports' offsets.

#include <cstddef>
#include <string>
#include <vector>

#include "FaultMatrix.h"
#include "Steps.h"

using namespace faultmatrix;

namespace {

constexpr const char* kOutputsUnaffected = "outputs unaffected: InitVal and events reach the bus";
constexpr const char* kNoProcessData = "the driver runs without process data; events are accepted";

// The lines of `count` buffers that never came: each one's failure, then for each the offset of
// its port and its release at teardown failing on the missing handle.
std::vector<LoggedLine> missingBuffers(const std::string& error, std::size_t count) {
    std::vector<LoggedLine> lines(count, failure(kNoBuffer, error));
    lines.insert(lines.end(), count, failure(kNoOffset, kNullOffsetHandle));
    lines.insert(lines.end(), count, failure(kNoRelease, kNullReleaseHandle));
    return lines;
}

}  // namespace

namespace {

std::vector<FaultRow> constructorRows() {
    return {
        {.name = "DigitalConstructorGetBufferOfInFails",
         .fault = {kGetBuffer, "digital module constructor: buffer 1:IN", "IN frame not ready"},
         .steps = {createDigital, failNext, initialize, digitalOnBus(0x20), passGate,
                   publishedDigital(0), calls(kBeginRead, 0), deliver(kPin6, 1),
                   digitalOnBus(0x60)},
         .log = missingBuffers("IN frame not ready", 1),
         .notes = {"pin 3 (on) is never read and published as 0", kOutputsUnaffected,
                   "1:OUT released; releasing the missing 1:IN handle fails and is logged"}},
        {.name = "DigitalConstructorGetBufferOfInAndOutFail",
         .fault = {kGetBuffer, "digital module constructor: buffers 1:IN and 1:OUT",
                   "GDS not configured"},
         .steps = {createDigital, failTwice, initialize, passGate, publishedDigital(0),
                   deliver(kPin6, 1), digitalInGds(0x00), digitalOnBus(0x00), calls(kBeginRead, 0),
                   calls(kBeginWrite, 0)},
         .log = missingBuffers("GDS not configured", 2),
         .notes = {"no frame is touched: pin 3 published as 0, InitVal and events write nothing",
                   kNoProcessData, "both releases of the missing handles fail and are logged"}},
        {.name = "AnalogConstructorGetBufferOfInFails",
         .fault = {kGetBuffer, "analog module constructor: buffer 1:IN",
                   "IN frame locked by firmware update"},
         .steps = {createAnalog, failNext, initialize, analogOnBus(1, 15000), passGate,
                   publishedAnalog(0.0f), deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
         .log = missingBuffers("IN frame locked by firmware update", 1),
         .notes = {"channel 0 (10.0) is never read and published as 0.0", kOutputsUnaffected,
                   "1:OUT released; releasing the missing 1:IN handle fails and is logged"}},
        {.name = "AnalogConstructorGetBufferOfInAndOutFail",
         .fault = {kGetBuffer, "analog module constructor: buffers 1:IN and 1:OUT",
                   "GDS not configured"},
         .steps = {createAnalog, failTwice, initialize, passGate, publishedAnalog(0.0f),
                   deliverFloat(kChannel1, 2.5f), analogInGds(1, 0), analogOnBus(1, 0),
                   calls(kBeginRead, 0), calls(kBeginWrite, 0)},
         .log = missingBuffers("GDS not configured", 2),
         .notes = {"no frame is touched: 0.0 published, InitVal and events write nothing",
                   kNoProcessData, "both releases of the missing handles fail and are logged"}},
        {.name = "DigitalConstructorOffsetOfDI8Fails",
         .fault = {kOffset, "digital module constructor: port DI8", "Variable table not loaded"},
         .steps = {createDigital, failNext, initialize, passGate, publishedDigital(0),
                   calls(kBeginRead, 0), deliver(kPin6, 1), digitalOnBus(0x60)},
         .log = {failure(kNoOffset, "Variable table not loaded")},
         .notes = {"pin 3 (on) is never read and published as 0", kOutputsUnaffected}},
        {.name = "DigitalConstructorOffsetsOfDI8AndDO8Fail",
         .fault = {kOffset, "digital module constructor: ports DI8 and DO8",
                   "Variable table not loaded"},
         .steps = {createDigital, failTwice, initialize, passGate, publishedDigital(0),
                   deliver(kPin6, 1), digitalInGds(0x00), digitalOnBus(0x00), calls(kBeginRead, 0),
                   calls(kBeginWrite, 0)},
         .log = {failure(kNoOffset, "Variable table not loaded"),
                 failure(kNoOffset, "Variable table not loaded")},
         .notes = {"pin 3 published as 0; InitVal and events write nothing, bus stays 0x00",
                   kNoProcessData}},
        {.name = "AnalogConstructorOffsetOfAI32Fails",
         .fault = {kOffset, "analog module constructor: port AI32", "Variable table not loaded"},
         .steps = {createAnalog, failNext, initialize, passGate, publishedAnalog(0.0f),
                   calls(kBeginRead, 0), deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
         .log = {failure(kNoOffset, "Variable table not loaded")},
         .notes = {"channel 0 (10.0) is never read and published as 0.0", kOutputsUnaffected}},
        {.name = "AnalogConstructorOffsetsOfAI32AndAQ32Fail",
         .fault = {kOffset, "analog module constructor: ports AI32 and AQ32",
                   "Variable table not loaded"},
         .steps = {createAnalog, failTwice, initialize, passGate, publishedAnalog(0.0f),
                   deliverFloat(kChannel1, 2.5f), analogInGds(1, 0), analogOnBus(1, 0),
                   calls(kBeginRead, 0), calls(kBeginWrite, 0)},
         .log = {failure(kNoOffset, "Variable table not loaded"),
                 failure(kNoOffset, "Variable table not loaded")},
         .notes = {"0.0 published; InitVal and events write nothing, bus stays 0", kNoProcessData}},

    };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Constructor, FaultMatrix, testing::ValuesIn(constructorRows()), rowName);
