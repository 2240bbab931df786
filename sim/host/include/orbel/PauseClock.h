// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

namespace orbel {

class DriverFiber;

// A clock on which the host runs the pauses (nanosleep) of its driver threads. Without one,
// pauses take real time. Installed by a host program that controls time, such as a test.
class PauseClock {
public:
    virtual ~PauseClock() = default;

    // True when the drivers started while the clock is installed run on fibers of the host's
    // thread (orbel/DriverFiber.h) instead of threads of their own. Such a clock is told of each
    // new fiber (fiberStarting) and resumes it; its pause suspends the fiber.
    virtual bool runsDriversOnFibers() const { return false; }

    // A driver thread is about to start; called on the starting thread before the new thread
    // runs, so that the clock counts it as running from the start.
    virtual void threadStarting() = 0;

    // A driver fiber has been made and is ready to run; it runs when the clock resumes it. Called
    // instead of threadStarting() on a clock that runs drivers on fibers.
    virtual void fiberStarting(DriverFiber& /*fiber*/) {}

    // The current driver thread (or fiber) is ending; called on that thread (or fiber).
    virtual void threadEnding() = 0;

    // Pauses the current driver thread for `request`. Returns when the pause is over, or early
    // when orbel::endRequested() has become true for this thread.
    virtual void pause(const timespec& request) = 0;

    // Wakes every paused or waiting driver thread so that it sees an end request.
    virtual void wakeAll() = 0;
};

// Installs the clock (null: real time). Install it before any driver thread starts, and keep it
// until every driver thread has ended.
void setPauseClock(PauseClock* clock);
PauseClock* pauseClock();

// Installs the clock; throws std::logic_error while another clock is installed: two hosts
// controlling time at once would each miss the other's threads.
void installPauseClock(PauseClock& clock);
// Takes the clock out again: real time.
void uninstallPauseClock(PauseClock& clock);

}  // namespace orbel
