// SPDX-License-Identifier: MIT
// The scan: the input copy at its start, the reads of the digital and analog inputs in the
// initial publication and in a steady scan, and the platform's error text of a failure line.

#include <string>
#include <vector>

#include "FaultRowTest.h"

using namespace faultmatrix;

namespace {

std::vector<FaultRow> scanRows() {
    return {
        {
            .name = "InitialPublicationReadInputsFails",
            .call = kReadInputs,
            .site = "run: start of the initial publication",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored, nothing logged; the stale image publishes pin 3 as 0",
            .teardown = kBothReleased,
            .next = "the next scan sees pin 3 on and publishes 1",
            .steps = {createDigital, digitalInput(false), initialize, digitalInput(true), failNext,
                      passGate, publishedDigital(0), passGate, publishedDigital(1)},
        },
        {
            .name = "SteadyScanReadInputsFails",
            .call = kReadInputs,
            .site = "run: start of a steady scan",
            .error = "Axioline bus cycle missed",
            .log = {},
            .neutral = "result ignored, nothing logged; pin 3 switched off is not seen, nothing "
                       "published",
            .teardown = kBothReleased,
            .next = "the next scan publishes 0",
            .steps = {startDigital, publishedDigital(1), digitalInput(false), failNext, passGate,
                      published({}), passGate, publishedDigital(0)},
        },
        {
            .name = "InitialDigitalReadBeginReadFails",
            .call = kBeginRead,
            .site = "readDigital: initial publication",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; pin 3 (on) published as 0",
            .teardown = kBothReleased,
            .next = "the next scan publishes 1",
            .steps = {createDigital, initialize, failNext, passGate, publishedDigital(0), passGate,
                      publishedDigital(1)},
        },
        {
            .name = "SteadyDigitalReadBeginReadFails",
            .call = kBeginRead,
            .site = "readDigital: steady scan",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; the read gives 0, published as a change",
            .teardown = kBothReleased,
            .next = "the next scan publishes 1 again",
            .steps = {startDigital, forgetPublished, failNext, passGate, publishedDigital(0),
                      passGate, publishedDigital(1)},
        },
        {
            .name = "InitialDigitalReadEndReadFails",
            .call = kEndRead,
            .site = "readDigital: initial publication",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the value read is kept: pin 3 published as 1",
            .teardown = kBothReleased,
            .next = "next scan: the scan thread still holds the lock, its read is refused (0 "
                    "published) and its End frees the lock; the scan after publishes 1",
            .steps = {createDigital, initialize, failNext, passGate, publishedDigital(1),
                      openLocks(1), passGate, publishedDigital(0), passGate, publishedDigital(1)},
        },
        {
            .name = "SteadyDigitalReadEndReadFails",
            .call = kEndRead,
            .site = "readDigital: steady scan",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the value read is kept: pin 3 switched off is published as 0",
            .teardown = kBothReleased,
            .next = "next scan: its read is refused and gives 0 (unchanged, nothing published), "
                    "its End frees the lock; pin 3 switched on then is published as 1",
            .steps = {startDigital, forgetPublished, digitalInput(false), failNext, passGate,
                      publishedDigital(0), digitalInput(true), passGate, published({}), passGate,
                      publishedDigital(1)},
        },
        {
            .name = "InitialAnalogReadBeginReadFails",
            .call = kBeginRead,
            .site = "readAnalog: initial publication",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; channel 0 (10.0) published as 0.0",
            .teardown = kBothReleased,
            .next = "the next scan publishes 10.0",
            .steps = {createAnalog, initialize, failNext, passGate, publishedAnalog(0.0f), passGate,
                      publishedAnalog(10.0f)},
        },
        {
            .name = "SteadyAnalogReadBeginReadFails",
            .call = kBeginRead,
            .site = "readAnalog: steady scan",
            .error = "IN frame being refreshed",
            .log = {failure(kNoBeginRead, "IN frame being refreshed")},
            .neutral = "EndRead still called; the read gives 0.0, published as a change",
            .teardown = kBothReleased,
            .next = "the next scan publishes 10.0 again",
            .steps = {startAnalog, forgetPublished, failNext, passGate, publishedAnalog(0.0f),
                      passGate, publishedAnalog(10.0f)},
        },
        {
            .name = "InitialAnalogReadEndReadFails",
            .call = kEndRead,
            .site = "readAnalog: initial publication",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the word read is kept: 10.0 published",
            .teardown = kBothReleased,
            .next = "next scan: its read is refused (0.0 published) and its End frees the lock; "
                    "the scan after publishes 10.0",
            .steps = {createAnalog, initialize, failNext, passGate, publishedAnalog(10.0f),
                      passGate, publishedAnalog(0.0f), passGate, publishedAnalog(10.0f)},
        },
        {
            .name = "SteadyAnalogReadEndReadFails",
            .call = kEndRead,
            .site = "readAnalog: steady scan",
            .error = "IN frame unlock timed out",
            .log = {failure(kNoUnlock, "IN frame unlock timed out"),
                    failure(kNoBeginRead, kReadLockStillHeld)},
            .neutral = "the word read is kept: a change to 2.5 is published",
            .teardown = kBothReleased,
            .next = "next scan: its read is refused (0.0 published) and its End frees the lock; "
                    "the scan after publishes 2.5",
            .steps = {startAnalog, forgetPublished, analogInput(7500), failNext, passGate,
                      publishedAnalog(2.5f), passGate, publishedAnalog(0.0f), passGate,
                      publishedAnalog(2.5f)},
        },
        {
            .name = "FailureLineGetLastErrorFails",
            .call = kLastError,
            .site = "any failure line (here: BeginRead in a steady scan)",
            .error = "error text replaced",
            .log = {failure(kNoBeginRead, "error text replaced")},
            .neutral = "the line carries whatever ArpPlc_GetLastError hands out; 0 published",
            .teardown = kBothReleased,
            .next = "the next scan publishes 1 again",
            .steps = {startDigital, forgetPublished, fail(kBeginRead, "IN frame being refreshed"),
                      failNext, passGate, publishedDigital(0), passGate, publishedDigital(1)},
        },
    };
}

}  // namespace

FAULT_MATRIX_ROWS(Scan, scanRows())
