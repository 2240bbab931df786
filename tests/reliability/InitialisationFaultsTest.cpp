// SPDX-License-Identifier: MIT
// initialize(): the input image before registration, the initial values of the outputs, and the
// initial output image.

#include <string>
#include <vector>

#include "FaultMatrix.h"
#include "Steps.h"

using namespace faultmatrix;

namespace {

std::vector<FaultRow> initialisationRows() {
    return {
        {.name = "InitializeReadInputsFails",
         .fault = {kReadInputs, "initialize: input image before registration",
                   "Axioline bus not running"},
         .steps = {createDigital, failNext, initialize, threadStarted(true), passGate,
                   publishedDigital(1)},
         .notes = {"result ignored, nothing logged; registration goes on",
                   "the thread's initial publication copies the inputs itself: pin 3 published 1"}},
        {.name = "InitDigitalOutBeginWriteFails",
         .fault = {kBeginWrite, "initDigitalOut: InitVal of pin 5", "OUT frame busy"},
         .steps = {createDigital, failNext, initialize, calls(kBeginWrite, 2), digitalInGds(0x20),
                   digitalOnBus(0x20), deliver(kPin6, 1), digitalOnBus(0x60)},
         .log = {failure(kNoBeginWrite, "OUT frame busy")},
         .notes = {"EndWrite still called; nothing written, but pin 5's 1 is remembered and "
                   "pin 6's initial write carries it: 0x20",
                   "the next event (pin 6 <- 1) puts 0x60 on the bus"}},
        {.name = "InitDigitalOutEndWriteFails",
         .fault = {kEndWrite, "initDigitalOut: InitVal of pin 5", kOutUnlockTimedOut},
         .steps = {createDigital, failNext, initialize, nestedBegins(1), digitalInGds(0x20),
                   digitalOnBus(0x20), deliver(kPin6, 1), digitalOnBus(0x60)},
         .log = writeLockKept(),
         .notes = {"GDS holds 0x20; pin 6's initial write is refused while the host thread "
                   "still holds the lock, and its End frees it",
                   "the initial copy brings 0x20 to the bus; the next event (pin 6 <- 1) gives "
                   "0x60"}},
        {.name = "InitAnalogOutBeginWriteFails",
         .fault = {kBeginWrite, "initAnalogOut: InitVal of channel 1", "OUT frame busy"},
         .steps = {createAnalog, failNext, initialize, analogInGds(1, 0), analogOnBus(1, 0),
                   deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
         .log = {failure(kNoBeginWrite, "OUT frame busy")},
         .notes = {"EndWrite still called; GDS and bus keep 0",
                   "the next event (2.5) is written: 7500 on the bus"}},
        {.name = "InitAnalogOutEndWriteFails",
         .fault = {kEndWrite, "initAnalogOut: InitVal of channel 1", kOutUnlockTimedOut},
         .steps = {createAnalog, failNext, initialize, analogInGds(1, 15000), analogOnBus(1, 0),
                   deliverFloat(kChannel1, 2.5f), analogOnBus(1, 15000),
                   deliverFloat(kChannel1, 2.5f), analogOnBus(1, 7500)},
         .log = writeLockKept(),
         .notes = outputLockKept("15000", "bus 0", "next event", "7500")},
        {.name = "InitializeWriteOutputsFails",
         .fault = {kWriteOutputs, "initialize: initial output image", "Axioline bus not running"},
         .steps = {createDigital, failNext, initialize, threadStarted(true), digitalInGds(0x20),
                   digitalOnBus(0x00), deliver(kPin6, 1), digitalOnBus(0x60)},
         .notes = {"result ignored, nothing logged; GDS holds 0x20, bus 0x00; thread starts",
                   "the next output event's copy brings both outputs: 0x60"}},

    };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Initialisation, FaultMatrix, testing::ValuesIn(initialisationRows()),
                         rowName);
