// SPDX-License-Identifier: MIT
// Output events: the writes of a digital and an analog output, and the copy of the output image
// after every kind of event.

#include <string>
#include <vector>

#include "FaultMatrix.h"
#include "Steps.h"

using namespace faultmatrix;

namespace {

std::vector<FaultRow> eventRows() {
    return {
        {.name = "DigitalOutputEventBeginWriteFails",
         .fault = {kBeginWrite, "writeDigital: output event (pin 5 <- 0)", "OUT frame busy"},
         .steps = {startDigital, failNext, deliver(kPin5, 0), digitalInGds(0x20),
                   digitalOnBus(0x20), deliver(kPin6, 1), digitalOnBus(0x40)},
         .log = {failure(kNoBeginWrite, "OUT frame busy")},
         .notes = {"EndWrite still called; GDS and bus keep 0x20",
                   "pin 5's 0 is remembered: the next event (pin 6 <- 1) puts 0x40 on the bus"}},
        {.name = "DigitalOutputEventEndWriteFails",
         .fault = {kEndWrite, "writeDigital: output event (pin 5 <- 0)", kOutUnlockTimedOut},
         .steps = {startDigital, failNext, deliver(kPin5, 0), digitalInGds(0x00),
                   digitalOnBus(0x20), deliver(kPin6, 1), digitalOnBus(0x00), deliver(kPin6, 1),
                   digitalOnBus(0x40)},
         .log = writeLockKept(),
         .notes = outputLockKept("0x00", "bus keeps 0x20", "next event", "0x40")},
        {.name = "AnalogOutputEventBeginWriteFails",
         .fault = {kBeginWrite, "writeAnalog: output event (channel 1 <- 2.5)", "OUT frame busy"},
         .steps = {startAnalog, failNext, deliverFloat(kChannel1, 2.5f), analogInGds(1, 15000),
                   analogOnBus(1, 15000), deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
         .log = {failure(kNoBeginWrite, "OUT frame busy")},
         .notes = {"EndWrite still called; GDS and bus keep 15000",
                   "the next event (2.5) is written: 7500 on the bus"}},
        {.name = "AnalogOutputEventEndWriteFails",
         .fault = {kEndWrite, "writeAnalog: output event (channel 1 <- 2.5)", kOutUnlockTimedOut},
         .steps = {startAnalog, failNext, deliverFloat(kChannel1, 2.5f), analogInGds(1, 7500),
                   analogOnBus(1, 15000), deliverFloat(kChannel1, 1.0f), analogOnBus(1, 7500),
                   deliverFloat(kChannel1, 1.0f), analogOnBus(1, 3000)},
         .log = writeLockKept(),
         .notes = outputLockKept("7500", "bus keeps 15000", "next event (1.0)", "3000")},
        {.name = "DigitalOutputEventWriteOutputsFails",
         .fault = {kWriteOutputs, "onReceiveEvent: after a digital output event (pin 5 <- 0)",
                   "Axioline bus cycle missed"},
         .steps = {startDigital, failNext, deliver(kPin5, 0), digitalInGds(0x00),
                   digitalOnBus(0x20), deliver(kPin6, 1), digitalOnBus(0x40)},
         .notes = {"result ignored, nothing logged; GDS 0x00, bus keeps 0x20",
                   "the next event (pin 6 <- 1) brings both: 0x40"}},
        {.name = "AnalogOutputEventWriteOutputsFails",
         .fault = {kWriteOutputs, "onReceiveEvent: after an analog output event (channel 1 <- 2.5)",
                   "Axioline bus cycle missed"},
         .steps = {startAnalog, failNext, deliverFloat(kChannel1, 2.5f), analogInGds(1, 7500),
                   analogOnBus(1, 15000), deliverFloat(kChannel1, 1.0f), analogOnBus(1, 3000)},
         .notes = {"result ignored, nothing logged; GDS 7500, bus keeps 15000",
                   "the next event (1.0) is copied: 3000"}},
        {.name = "RestartEventWriteOutputsFails",
         .fault = {kWriteOutputs, "onReceiveEvent: after a restart event",
                   "Axioline bus cycle missed"},
         .steps = {startDigital, failNext, deliver(kRestart, 1), restarts(1), digitalOnBus(0x20),
                   deliver(kPin6, 1), digitalOnBus(0x60)},
         .log = {notice(kRestartNotice)},
         .notes = {"result ignored; the restart is made, outputs unchanged",
                   "the next output event is written and copied"}},
        {.name = "UnsubscribedEventWriteOutputsFails",
         .fault = {kWriteOutputs, "onReceiveEvent: after an unsubscribed event",
                   "Axioline bus cycle missed"},
         .steps = {startDigital, failNext, deliver(kUnsubscribed, 1), digitalOnBus(0x20),
                   deliver(kPin6, 1), digitalOnBus(0x60)},
         .notes = {"result ignored; the event is reported, outputs unchanged",
                   "the next output event is written and copied"},
         .stops = {"Unsubscribed event received"}},

    };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Event, FaultMatrix, testing::ValuesIn(eventRows()), rowName);
