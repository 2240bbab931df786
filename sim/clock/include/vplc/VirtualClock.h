// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <mutex>
#include <vector>

#include "orbel/DriverFiber.h"
#include "orbel/PauseClock.h"
#include "orbel/PauseClockInstallation.h"

class CSI_base;

namespace vplc {

// Virtual time for driver threads, so that a test of a scan runs without real sleeps and is
// exact. While it lives, the clock is the process's pause clock: every pause (nanosleep) of a
// driver thread waits on it, and time moves only when the test says so. At most one pause clock
// can be installed; constructing a second throws std::logic_error. Construct it before any driver
// thread starts and destroy it after every driver thread has ended.
//
// The clock knows every driver thread to be in one of four states:
//   running  counted from threadStarting(), before the thread runs; settle() waits for these
//   paused   in pause(), until virtual time reaches its wake time (start + request)
//   held     at the scan gate, at the start of ArpPlcAxio_ReadFromAxioToGds, until released
//   ended    after threadEnding()
// A thread that is woken (by runUntil(), releaseScan() or holdScans(false)) is counted as running
// again before it wakes, so settle() cannot miss it. A paused or held thread whose end has been
// requested (orbel::endRequested()) leaves at wakeAll(): a pause returns early, the gate throws
// orbel::ThreadEnd. Host threads are never paused or held.
//
// How the drivers run (Mode): by default each driver's run() goes on a fiber of the host's thread
// (orbel/DriverFiber.h), and the clock is a discrete-event scheduler: settling resumes each fiber
// that is ready until it pauses, is held or ends, and fibers whose pauses end at the same time are
// resumed in the order in which they began those pauses. Nothing runs beside the host, no thread is
// handed over, and a run comes out the same every time. With Mode::Threads each driver has a
// thread of its own, as on a controller, and settling waits for them; the environment variable
// VPLC_DRIVER_THREADS=threads makes it the default, so that the suite can run its tests both ways.
//
// The methods that settle block the calling test thread; never call them from a driver thread.
class VirtualClock final : public orbel::PauseClock {
public:
    using Duration = std::chrono::nanoseconds;

    enum class Mode { Fibers, Threads };

    // Mode::Threads when VPLC_DRIVER_THREADS is "threads", else Mode::Fibers.
    static Mode defaultMode();

    struct Pause {
        const CSI_base* driver;  // the driver whose thread paused
        Duration start;          // virtual time at which the pause began
        Duration duration;       // the requested duration
    };

    // Installs itself while it lives; std::logic_error while another clock is installed.
    explicit VirtualClock(Mode mode = defaultMode());

    Mode mode() const { return mode_; }

    // Virtual time since the clock was made; starts at 0.
    Duration now() const;

    // Blocks until no driver thread is running: each is paused, held or ended. A driver thread
    // that waits for anything else (a GDS frame lock that the test thread holds, say) is running.
    void settle();

    // Settles; then, in time order, sets the time to the earliest wake time that lies strictly
    // before t, wakes the threads due then and settles again; finally sets the time to t.
    // Threads due exactly at t stay paused, so what a test does at t happens before they wake.
    // Throws std::invalid_argument for a t before now().
    void runUntil(Duration t);
    void runFor(Duration d);

    // One step of runUntil(t): when a thread is due strictly before t, sets the time to the
    // earliest such wake time, wakes the threads due then, settles and returns that time;
    // otherwise sets the time to t and returns t. A host that must answer what the threads did
    // at each instant (before the next one) runs the clock this way.
    Duration runNext(Duration t);

    // Every pause so far, in the order the threads began them (while they are kept).
    std::vector<Pause> pauses() const;

    // Whether pauses() keeps a record of each pause (it does unless told otherwise). A run
    // without end turns it off: the record grows by one entry a scan.
    void keepPauses(bool keep);

    // Holding, every driver thread that starts a scan waits at the gate. Ending the hold lets the
    // held threads go on and settles.
    void holdScans(bool hold);

    // Settles, lets each held thread through the gate for that one call, and settles again (each
    // then pauses on the clock or comes back to the gate). Returns the number of threads let
    // through.
    int releaseScan();

    int pausedThreads() const;
    int heldThreads() const;

    // The scan gate: the controller calls it at the start of ArpPlcAxio_ReadFromAxioToGds, through
    // the scan-start hook (vplc/HostHooks.h) that this library installs.
    void atScanStart();

    // orbel::PauseClock
    bool runsDriversOnFibers() const override { return mode_ == Mode::Fibers; }
    void fiberStarting(orbel::DriverFiber& fiber) override;
    void threadStarting() override;
    void threadEnding() override;
    void pause(const timespec& request) override;
    void wakeAll() override;

private:
    // Each waiting thread has a condition variable of its own, and settling one more, so that a
    // thread is woken only when what it waits for may have come about: with one for all, every
    // pause woke every other paused thread, which made runs with several drivers slow.
    // A fiber waits the same way, with the fiber in place of the condition variable.
    struct Waiter {
        orbel::DriverFiber* fiber = orbel::currentFiber();
        std::condition_variable wake;
    };
    struct Sleeper : Waiter {
        Duration wakeAt{};
        bool woken = false;
    };
    struct Ticket : Waiter {
        bool released = false;
    };

    void settle(std::unique_lock<std::mutex>& lock);
    // Runs the threads due at the earliest wake time before t; false when none is due.
    bool runEarliestBefore(Duration t, std::unique_lock<std::mutex>& lock);
    int releaseHeld();
    // A thread stops running (paused, held or ended); the caller holds the lock.
    void stoppedRunning();
    // Lets the waiter go on: notifies its thread, or makes its fiber ready.
    void wake(Waiter& waiter);
    // Waits until `done` holds or the current thread's end is requested.
    template <class Done>
    void wait(std::unique_lock<std::mutex>& lock, Waiter& waiter, Done done);
    // Stops running and waits among `waiting` until the clock lets the waiter go (sets `letGo`);
    // if its end is requested first, it leaves `waiting` and runs on.
    template <class Kind>
    void waitIn(std::vector<Kind*>& waiting, std::unique_lock<std::mutex>& lock, Kind& waiter,
                const bool& letGo);

    const Mode mode_;
    mutable std::mutex mutex_;
    std::condition_variable settled_;
    Duration now_{0};
    int running_ = 0;
    bool holding_ = false;
    std::vector<Sleeper*> sleepers_;
    std::vector<Ticket*> held_;
    bool keepPauses_ = true;
    std::deque<Pause> pauses_;               // grows without moving what it holds
    std::deque<orbel::DriverFiber*> ready_;  // fibers to resume when settling, in order
    orbel::PauseClockInstallation installation_{*this};
};

}  // namespace vplc
