// SPDX-License-Identifier: MIT
// The module constructors' acquisition of the GDS frame buffers and of their ports' offsets.

#include <string>
#include <vector>

#include "FaultRowTest.h"

using namespace faultmatrix;

namespace {

std::vector<FaultRow> moduleRows() {
    return {
        {
            .name = "DigitalConstructorGetBufferOfInFails",
            .call = kGetBuffer,
            .site = "digital module constructor: buffer 1:IN",
            .error = "IN frame not ready",
            .log = {failure(kNoBuffer, "IN frame not ready"), failure(kNoOffset, kNullOffsetHandle),
                    failure(kNoRelease, kNullReleaseHandle)},
            .neutral = "pin 3 (on) is never read and published as 0",
            .teardown = "1:OUT released; releasing the missing 1:IN handle fails and is logged",
            .next = "outputs unaffected: InitVal and events reach the bus",
            .steps = {createDigital, failNext, initialize, digitalOnBus(0x20), passGate,
                      publishedDigital(0), calls(kBeginRead, 0), deliver(kPin6, 1),
                      digitalOnBus(0x60)},
        },
        {
            .name = "DigitalConstructorGetBufferOfInAndOutFail",
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
            .steps = {createDigital, failTwice, initialize, passGate, publishedDigital(0),
                      deliver(kPin6, 1), digitalInGds(0x00), digitalOnBus(0x00),
                      calls(kBeginRead, 0), calls(kBeginWrite, 0)},
        },
        {
            .name = "AnalogConstructorGetBufferOfInFails",
            .call = kGetBuffer,
            .site = "analog module constructor: buffer 1:IN",
            .error = "IN frame locked by firmware update",
            .log = {failure(kNoBuffer, "IN frame locked by firmware update"),
                    failure(kNoOffset, kNullOffsetHandle), failure(kNoRelease, kNullReleaseHandle)},
            .neutral = "channel 0 (10.0) is never read and published as 0.0",
            .teardown = "1:OUT released; releasing the missing 1:IN handle fails and is logged",
            .next = "outputs unaffected: InitVal and events reach the bus",
            .steps = {createAnalog, failNext, initialize, analogOnBus(1, 15000), passGate,
                      publishedAnalog(0.0f), deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
        },
        {
            .name = "AnalogConstructorGetBufferOfInAndOutFail",
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
            .steps = {createAnalog, failTwice, initialize, passGate, publishedAnalog(0.0f),
                      deliverFloat(kChannel1, 2.5f), analogInGds(1, 0), analogOnBus(1, 0),
                      calls(kBeginRead, 0), calls(kBeginWrite, 0)},
        },
        {
            .name = "DigitalConstructorOffsetOfDI8Fails",
            .call = kOffset,
            .site = "digital module constructor: port DI8",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded")},
            .neutral = "pin 3 (on) is never read and published as 0",
            .teardown = kBothReleased,
            .next = "outputs unaffected: InitVal and events reach the bus",
            .steps = {createDigital, failNext, initialize, passGate, publishedDigital(0),
                      calls(kBeginRead, 0), deliver(kPin6, 1), digitalOnBus(0x60)},
        },
        {
            .name = "DigitalConstructorOffsetsOfDI8AndDO8Fail",
            .call = kOffset,
            .site = "digital module constructor: ports DI8 and DO8",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded"),
                    failure(kNoOffset, "Variable table not loaded")},
            .neutral = "pin 3 published as 0; InitVal and events write nothing, bus stays 0x00",
            .teardown = kBothReleased,
            .next = "the driver runs without process data; events are accepted",
            .steps = {createDigital, failTwice, initialize, passGate, publishedDigital(0),
                      deliver(kPin6, 1), digitalInGds(0x00), digitalOnBus(0x00),
                      calls(kBeginRead, 0), calls(kBeginWrite, 0)},
        },
        {
            .name = "AnalogConstructorOffsetOfAI32Fails",
            .call = kOffset,
            .site = "analog module constructor: port AI32",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded")},
            .neutral = "channel 0 (10.0) is never read and published as 0.0",
            .teardown = kBothReleased,
            .next = "outputs unaffected: InitVal and events reach the bus",
            .steps = {createAnalog, failNext, initialize, passGate, publishedAnalog(0.0f),
                      calls(kBeginRead, 0), deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
        },
        {
            .name = "AnalogConstructorOffsetsOfAI32AndAQ32Fail",
            .call = kOffset,
            .site = "analog module constructor: ports AI32 and AQ32",
            .error = "Variable table not loaded",
            .log = {failure(kNoOffset, "Variable table not loaded"),
                    failure(kNoOffset, "Variable table not loaded")},
            .neutral = "0.0 published; InitVal and events write nothing, bus stays 0",
            .teardown = kBothReleased,
            .next = "the driver runs without process data; events are accepted",
            .steps = {createAnalog, failTwice, initialize, passGate, publishedAnalog(0.0f),
                      deliverFloat(kChannel1, 2.5f), analogInGds(1, 0), analogOnBus(1, 0),
                      calls(kBeginRead, 0), calls(kBeginWrite, 0)},
        },
    };
}

}  // namespace

FAULT_MATRIX_ROWS(Constructor, moduleRows())
