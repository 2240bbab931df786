// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "FaultRow.h"
#include "vplc/Runtime.h"

// The words a row's steps are written in: what the driver is made to do, and what is checked on
// the way. Every check of a reading goes through one routine, so that a failing step names what
// it read; the row's test case names the step's place in the row.
namespace faultmatrix {

// Making the driver and letting it run. The digital driver starts with pin 3 on, the analog one
// with channel 0 at 10.0 (word 30000).
void createDigital(Scenario& s);
void createAnalog(Scenario& s);
void startDigital(Scenario& s);  // created, initialised, its initial publication made
void startAnalog(Scenario& s);
void initialize(Scenario& s);
void passGate(Scenario& s);  // one scan
void destroy(Scenario& s);

// The row's failure, armed for the row's call with the row's error text.
void failNext(Scenario& s);
void failTwice(Scenario& s);
// A failure of another call, for rows whose call fails only on the way of another one.
Step fail(const char* function, const char* error);

// What reaches the driver from outside.
Step digitalInput(bool on);
Step analogInput(uint16_t word);
Step deliver(uint32_t id, uint8_t value);
Step deliverFloat(uint32_t id, float value);
Step serviceLookup(vplc::Runtime::Lookup mode);

// Checks. `published` compares what the driver published since the previous `published` or
// `forgetPublished`.
void forgetPublished(Scenario& s);
Step published(Publications expected);
Step publishedDigital(uint8_t value);
Step publishedAnalog(float value);
Step digitalOnBus(uint8_t expected);
Step digitalInGds(uint8_t expected);
Step analogOnBus(int channel, uint16_t expected);
Step analogInGds(int channel, uint16_t expected);
Step calls(const char* function, int expected);
Step openLocks(int expected);
Step nestedBegins(int expected);
Step threadStarted(bool expected);
Step restarts(int expected);
Step liveServices(int expected);

// Remembers how often `function` has been called, for `callsSinceMark`.
Step markCalls(const char* function);
Step callsSinceMark(const char* function, int expected);

// Delivers a restart event and checks the exception it lets out, as "type: message".
Step restartThrows(std::string expected);

}  // namespace faultmatrix
