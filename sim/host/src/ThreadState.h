// SPDX-License-Identifier: MIT
#pragma once

#include <time.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

class CPosixThread;
class CSI_base;

namespace orbel {

class DriverFiber;
class PauseClock;
class SanitizerFiber;

// The library's side of one CPosixThread: the thread it started (or, on a clock that runs drivers
// on fibers, the fiber), who owns it, and the request to end it. Shared by the CPosixThread, the
// thread registry and the running thread itself, so that whoever finishes last releases it.
class ThreadState : public std::enable_shared_from_this<ThreadState> {
public:
    explicit ThreadState(CPosixThread& owner);
    ~ThreadState();

    // Starts a thread that runs the owner's run() once. Ignored, with a warning, while a thread
    // started earlier is still running.
    void start();

    // Waits until the started thread has ended, and joins it. Returns at once if there is none.
    // A fiber is resumed once; if it pauses again instead of ending, std::logic_error.
    void join();

    // Asks the started thread to end, wakes it until it has, and joins it; a fiber is resumed
    // until it has ended, and its stack released. On the thread or fiber itself it only asks.
    void end();

    // The owner is being destroyed: as end(), with a warning if the thread was still running.
    void endForDestruction();

    bool endRequested() const { return endRequested_.load(); }

    // A thread or fiber has been started and has not yet done all it does.
    bool running() const;

    // The driver that owns the thread; set when the thread starts.
    const CSI_base* driver() const { return driver_; }

    // The complete object of the owner; set when the thread starts, null before.
    const void* object() const { return object_.load(); }

    // Pauses the current driver thread, which this state belongs to, on `clock`.
    void pause(PauseClock& clock, const timespec& request);

    // The state of the driver thread running this code, or null on any other thread.
    static ThreadState* current();

private:
    void run();
    // The started fiber's body: run() less what belongs to a thread of its own.
    void runOnFiber();
    void startFiber(PauseClock& clock);
    void endFiber();
    void runDriver();
    // Runs the owner's run() and tells how it ended.
    std::string runOwner();
    void finish(std::string_view how) noexcept;
    void wake();
    bool onOwnThread() const;

    CPosixThread& owner_;
    std::atomic<bool> endRequested_{false};
    std::atomic<const void*> object_{nullptr};
    const CSI_base* driver_ = nullptr;
    SanitizerFiber* pauseFiber_ = nullptr;  // used by the driver thread only

    mutable std::mutex mutex_;
    std::condition_variable endedChanged_;
    std::thread worker_;
    std::unique_ptr<DriverFiber> fiber_;
    bool runFinished_ = false;  // the owner's run() has returned or thrown
    bool ended_ = false;        // the thread has done all it does
};

}  // namespace orbel
