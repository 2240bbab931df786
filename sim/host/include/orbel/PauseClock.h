#pragma once

#include <ctime>

namespace orbel {

// A clock on which the host runs the pauses (nanosleep) of its driver threads. Without one,
// pauses take real time. Installed by a host program that controls time, such as a test.
class PauseClock {
public:
    virtual ~PauseClock() = default;

    // A driver thread is about to start; called on the starting thread before the new thread
    // runs, so that the clock counts it as running from the start.
    virtual void threadStarting() = 0;

    // The current driver thread is ending; called on that thread.
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

}  // namespace orbel
