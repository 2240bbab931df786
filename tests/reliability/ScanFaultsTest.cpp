// SPDX-License-Identifier: MIT
// The scan: the input copy at its start, the reads of the digital and analog inputs in the
// initial publication and in a steady scan, and the platform's error text of a failure line.

#include <string>
#include <vector>

#include "FaultMatrix.h"
#include "Steps.h"

using namespace faultmatrix;

namespace {

std::vector<FaultRow> scanRows() {
    return {
        {.name = "InitialPublicationReadInputsFails",
         .fault = {kReadInputs, "run: start of the initial publication",
                   "Axioline bus cycle missed"},
         .steps = {createDigital, digitalInput(false), initialize, digitalInput(true), failNext,
                   passGate, publishedDigital(0), passGate, publishedDigital(1)},
         .notes = {"result ignored, nothing logged; the stale image publishes pin 3 as 0",
                   "the next scan sees pin 3 on and publishes 1"}},
        {.name = "SteadyScanReadInputsFails",
         .fault = {kReadInputs, "run: start of a steady scan", "Axioline bus cycle missed"},
         .steps = {startDigital, publishedDigital(1), digitalInput(false), failNext, passGate,
                   published({}), passGate, publishedDigital(0)},
         .notes = {"result ignored, nothing logged; pin 3 switched off is not seen, nothing "
                   "published",
                   "the next scan publishes 0"}},
        {.name = "InitialDigitalReadBeginReadFails",
         .fault = {kBeginRead, "readDigital: initial publication", "IN frame being refreshed"},
         .steps = {createDigital, initialize, failNext, passGate, publishedDigital(0), passGate,
                   publishedDigital(1)},
         .log = {failure(kNoBeginRead, "IN frame being refreshed")},
         .notes = {"EndRead still called; pin 3 (on) published as 0", "the next scan publishes 1"}},
        {.name = "SteadyDigitalReadBeginReadFails",
         .fault = {kBeginRead, "readDigital: steady scan", "IN frame being refreshed"},
         .steps = {startDigital, forgetPublished, failNext, passGate, publishedDigital(0), passGate,
                   publishedDigital(1)},
         .log = {failure(kNoBeginRead, "IN frame being refreshed")},
         .notes = {"EndRead still called; the read gives 0, published as a change",
                   "the next scan publishes 1 again"}},
        {.name = "InitialDigitalReadEndReadFails",
         .fault = {kEndRead, "readDigital: initial publication", kInUnlockTimedOut},
         .steps = {createDigital, initialize, failNext, passGate, publishedDigital(1), openLocks(1),
                   passGate, publishedDigital(0), passGate, publishedDigital(1)},
         .log = readLockKept(),
         .notes = {"the value read is kept: pin 3 published as 1",
                   "next scan: the scan thread still holds the lock, its read is refused (0 "
                   "published) and its End frees the lock; the scan after publishes 1"}},
        {.name = "SteadyDigitalReadEndReadFails",
         .fault = {kEndRead, "readDigital: steady scan", kInUnlockTimedOut},
         .steps = {startDigital, forgetPublished, digitalInput(false), failNext, passGate,
                   publishedDigital(0), digitalInput(true), passGate, published({}), passGate,
                   publishedDigital(1)},
         .log = readLockKept(),
         .notes = {"the value read is kept: pin 3 switched off is published as 0",
                   "next scan: its read is refused and gives 0 (unchanged, nothing published), "
                   "its End frees the lock; pin 3 switched on then is published as 1"}},
        {.name = "InitialAnalogReadBeginReadFails",
         .fault = {kBeginRead, "readAnalog: initial publication", "IN frame being refreshed"},
         .steps = {createAnalog, initialize, failNext, passGate, publishedAnalog(0.0f), passGate,
                   publishedAnalog(10.0f)},
         .log = {failure(kNoBeginRead, "IN frame being refreshed")},
         .notes = {"EndRead still called; channel 0 (10.0) published as 0.0",
                   "the next scan publishes 10.0"}},
        {.name = "SteadyAnalogReadBeginReadFails",
         .fault = {kBeginRead, "readAnalog: steady scan", "IN frame being refreshed"},
         .steps = {startAnalog, forgetPublished, failNext, passGate, publishedAnalog(0.0f),
                   passGate, publishedAnalog(10.0f)},
         .log = {failure(kNoBeginRead, "IN frame being refreshed")},
         .notes = {"EndRead still called; the read gives 0.0, published as a change",
                   "the next scan publishes 10.0 again"}},
        {.name = "InitialAnalogReadEndReadFails",
         .fault = {kEndRead, "readAnalog: initial publication", kInUnlockTimedOut},
         .steps = {createAnalog, initialize, failNext, passGate, publishedAnalog(10.0f), passGate,
                   publishedAnalog(0.0f), passGate, publishedAnalog(10.0f)},
         .log = readLockKept(),
         .notes = {"the word read is kept: 10.0 published",
                   "next scan: its read is refused (0.0 published) and its End frees the lock; "
                   "the scan after publishes 10.0"}},
        {.name = "SteadyAnalogReadEndReadFails",
         .fault = {kEndRead, "readAnalog: steady scan", kInUnlockTimedOut},
         .steps = {startAnalog, forgetPublished, analogInput(7500), failNext, passGate,
                   publishedAnalog(2.5f), passGate, publishedAnalog(0.0f), passGate,
                   publishedAnalog(2.5f)},
         .log = readLockKept(),
         .notes = {"the word read is kept: a change to 2.5 is published",
                   "next scan: its read is refused (0.0 published) and its End frees the lock; "
                   "the scan after publishes 2.5"}},
        {.name = "FailureLineGetLastErrorFails",
         .fault = {kLastError, "any failure line (here: BeginRead in a steady scan)",
                   "error text replaced"},
         .steps = {startDigital, forgetPublished, fail(kBeginRead, "IN frame being refreshed"),
                   failNext, passGate, publishedDigital(0), passGate, publishedDigital(1)},
         .log = {failure(kNoBeginRead, "error text replaced")},
         .notes = {"the line carries whatever ArpPlc_GetLastError hands out; 0 published",
                   "the next scan publishes 1 again"}},

    };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Scan, FaultMatrix, testing::ValuesIn(scanRows()), rowName);
