// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace axlsim {

// The time a run is played on: virtual (exact and fast) or the wall clock (for a live look).
class RunClock {
public:
    virtual ~RunClock() = default;

    virtual std::chrono::nanoseconds now() const = 0;

    // Until release, driver threads that start do not begin their first scan, so that a host
    // call that starts a thread finishes before the thread shows anything.
    virtual void holdDrivers() = 0;
    virtual void releaseDrivers() = 0;

    // Lets time pass up to `t`. On return the driver threads are quiet, and those due exactly at
    // `t` have not woken yet: what the host does at `t` comes first.
    virtual void advanceTo(std::chrono::nanoseconds t) = 0;

    // Lets time pass up to the next moment at which a driver thread wakes, if that comes before
    // `t`, and returns it once the threads woken then are quiet; otherwise as advanceTo(t), and
    // returns t.
    virtual std::chrono::nanoseconds runNext(std::chrono::nanoseconds t) = 0;
};

}  // namespace axlsim
