// SPDX-License-Identifier: MIT
#pragma once

// The kinds of service a driver offers; the values are fixed.
enum ServiceType : int {
    AnalogIn = 0,
    AnalogOut = 1,
    DigitalIn = 2,
    DigitalOut = 3,
    RestartDevice = 4,
    Unsupported = 5,
};
