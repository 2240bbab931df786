// SPDX-License-Identifier: MIT
#include "ThreadState.h"

#include <pthread.h>
#include <signal.h>

#include <chrono>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "DriverFiber.h"
#include "DriverRegistry.h"
#include "ObserverHub.h"
#include "PosixThread.h"
#include "SanitizerFiber.h"
#include "orbel/DriverThreads.h"
#include "orbel/PauseClock.h"

namespace orbel {

namespace {

constexpr std::string_view kEndedByHost = kThreadEndedByHost;
constexpr std::string_view kRunReturned = kThreadRunReturned;
constexpr std::string_view kUnknownException = "an exception of unknown type";
constexpr std::string_view kDeletedWhileRunning =
    "A driver object was deleted while its thread was running; the host ends the thread.";
constexpr std::string_view kStartedWhileRunning =
    "A driver thread was started while it was still running; the second start is ignored.";

// Interrupts a driver thread's real-time sleep; its handler does nothing, and it is installed
// without SA_RESTART so that the sleep returns and the thread can see the end request.
constexpr int kWakeSignal = SIGUSR2;

// A wake can arrive just before the thread starts to sleep, so it is repeated until the thread
// has ended.
constexpr auto kWakeInterval = std::chrono::milliseconds(2);

thread_local ThreadState* currentState = nullptr;

void ignoreWakeSignal(int) {}

void installWakeSignal() {
    static const bool installed = [] {
        struct sigaction action {};
        action.sa_handler = ignoreWakeSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = 0;
        return sigaction(kWakeSignal, &action, nullptr) == 0;
    }();
    static_cast<void>(installed);
}

}  // namespace

ThreadState::ThreadState(CPosixThread& owner) : owner_(owner) {}

ThreadState::~ThreadState() = default;

bool ThreadState::running() const {
    std::lock_guard lock(mutex_);
    return (worker_.joinable() || fiber_ != nullptr) && !ended_;
}

ThreadState* ThreadState::current() {
    if (DriverFiber* fiber = DriverFiber::current()) {
        return &fiber->owner();
    }
    return currentState;
}

void ThreadState::start() {
    std::unique_lock lock(mutex_);
    if (worker_.joinable() || fiber_ != nullptr) {
        if (!ended_) {
            const CSI_base* driver = driver_;
            lock.unlock();
            ObserverHub::instance().warn(driver, kStartedWhileRunning);
            return;
        }
        if (worker_.joinable()) {
            worker_.join();
        }
        fiber_.reset();
    }
    object_ = dynamic_cast<const void*>(&owner_);
    driver_ = DriverRegistry::instance().driverOf(object_);
    endRequested_ = false;
    runFinished_ = false;
    ended_ = false;
    PauseClock* clock = pauseClock();
    if (clock != nullptr && clock->runsDriversOnFibers()) {
        startFiber(*clock);
        return;
    }
    if (clock != nullptr) {
        clock->threadStarting();
    }
    try {
        worker_ = std::thread([self = shared_from_this()] { self->run(); });
    } catch (...) {
        if (clock != nullptr) {
            clock->threadEnding();
        }
        throw;
    }
}

// The fiber refers to this state by reference: the state owns the fiber and, being ended before
// it is destroyed, outlives its run.
void ThreadState::startFiber(PauseClock& clock) {
    fiber_ = std::make_unique<DriverFiber>(*this, [this] { runOnFiber(); });
    clock.fiberStarting(*fiber_);
}

void ThreadState::run() {
    currentState = this;
    runDriver();
    currentState = nullptr;
    {
        std::lock_guard lock(mutex_);
        ended_ = true;
    }
    endedChanged_.notify_all();
}

void ThreadState::runOnFiber() {
    runDriver();
    std::lock_guard lock(mutex_);
    ended_ = true;
}

void ThreadState::runDriver() {
    ObserverHub::instance().report([&](HostObserver& o) { o.threadStarted(driver_); });
    std::string how;
    {
        SanitizerFiber runFiber;
        SanitizerFiber pauseFiber;
        pauseFiber_ = &pauseFiber;
        runFiber.run([&] { how = runOwner(); });
        pauseFiber_ = nullptr;
    }
    finish(how);
    if (PauseClock* clock = pauseClock()) {
        clock->threadEnding();
    }
}

std::string ThreadState::runOwner() {
    try {
        owner_.run();
        return std::string(kRunReturned);
    } catch (const ThreadEnd&) {
        return std::string(kEndedByHost);
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return std::string(kUnknownException);
    }
}

void ThreadState::pause(PauseClock& clock, const timespec& request) {
    if (pauseFiber_ == nullptr) {
        clock.pause(request);
        return;
    }
    pauseFiber_->run([&] { clock.pause(request); });
}

void ThreadState::finish(std::string_view how) noexcept {
    {
        std::lock_guard lock(mutex_);
        runFinished_ = true;
    }
    ObserverHub::instance().report([&](HostObserver& o) { o.threadEnded(driver_, how); });
}

void ThreadState::join() {
    std::unique_lock lock(mutex_);
    if (fiber_ != nullptr) {
        if (onOwnThread()) {
            return;
        }
        lock.unlock();
        // A fiber ends only while it runs: resumed, it runs to its end or to its next pause or
        // gate, where only the clock (or an end request) moves it on. Waiting for it then would
        // never return, so the join is refused instead.
        fiber_->resume();
        if (!fiber_->finished()) {
            throw std::logic_error(
                "CPosixThread::join: the driver's fiber is paused on the virtual clock and ends "
                "only "
                "when the clock runs on or the host ends it (orbel::endDriverThread)");
        }
        return;
    }
    if (!worker_.joinable() || onOwnThread()) {
        return;
    }
    endedChanged_.wait(lock, [this] { return ended_; });
    if (worker_.joinable()) {
        worker_.join();
    }
}

void ThreadState::end() {
    std::unique_lock lock(mutex_);
    if (fiber_ != nullptr) {
        lock.unlock();
        endFiber();
        return;
    }
    if (!worker_.joinable()) {
        return;
    }
    endRequested_ = true;
    if (onOwnThread()) {
        return;
    }
    while (!ended_) {
        wake();
        endedChanged_.wait_for(lock, kWakeInterval, [this] { return ended_; });
    }
    if (worker_.joinable()) {
        worker_.join();
    }
}

void ThreadState::endFiber() {
    endRequested_ = true;
    if (onOwnThread()) {
        return;
    }
    while (!fiber_->finished()) {
        fiber_->resume();
    }
    std::lock_guard lock(mutex_);
    fiber_.reset();
}

void ThreadState::endForDestruction() {
    std::unique_lock lock(mutex_);
    if (!worker_.joinable() && fiber_ == nullptr) {
        return;
    }
    if (onOwnThread()) {
        endRequested_ = true;
        if (fiber_ != nullptr) {
            // The pause or gate that the fiber reaches next ends it, and whoever resumed it comes
            // back to a fiber whose state would be gone by then: such states are kept.
            static std::vector<std::shared_ptr<ThreadState>> endingOnOwnFiber;
            endingOnOwnFiber.push_back(shared_from_this());
        } else {
            worker_.detach();
        }
        return;
    }
    const bool running = !runFinished_;
    const CSI_base* driver = driver_;
    lock.unlock();
    if (running) {
        ObserverHub::instance().warn(driver, kDeletedWhileRunning);
    }
    end();
}

void ThreadState::wake() {
    if (PauseClock* clock = pauseClock()) {
        clock->wakeAll();
        return;
    }
    installWakeSignal();
    pthread_kill(worker_.native_handle(), kWakeSignal);
}

bool ThreadState::onOwnThread() const {
    if (fiber_ != nullptr) {
        return DriverFiber::current() == fiber_.get();
    }
    return worker_.get_id() == std::this_thread::get_id();
}

}  // namespace orbel
