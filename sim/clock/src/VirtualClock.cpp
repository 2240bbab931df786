// SPDX-License-Identifier: MIT
#include "vplc/VirtualClock.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "orbel/DriverThreads.h"

namespace vplc {

namespace {

VirtualClock::Duration durationOf(const timespec& request) {
    const auto duration = std::chrono::seconds(static_cast<std::int64_t>(request.tv_sec)) +
                          std::chrono::nanoseconds(static_cast<std::int64_t>(request.tv_nsec));
    return std::max(VirtualClock::Duration(0), duration);
}

}  // namespace

VirtualClock::Mode VirtualClock::defaultMode() {
    const char* setting = std::getenv("VPLC_DRIVER_THREADS");
    return setting != nullptr && std::string_view(setting) == "threads" ? Mode::Threads
                                                                        : Mode::Fibers;
}

VirtualClock::VirtualClock(Mode mode) : mode_(mode) {}

VirtualClock::Duration VirtualClock::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

void VirtualClock::settle() {
    std::unique_lock lock(mutex_);
    settle(lock);
}

void VirtualClock::runUntil(Duration t) {
    std::unique_lock lock(mutex_);
    if (t < now_) {
        throw std::invalid_argument("A virtual clock cannot run back in time");
    }
    settle(lock);
    while (runEarliestBefore(t, lock)) {
    }
    now_ = t;
}

VirtualClock::Duration VirtualClock::runNext(Duration t) {
    std::unique_lock lock(mutex_);
    if (t < now_) {
        throw std::invalid_argument("A virtual clock cannot run back in time");
    }
    settle(lock);
    if (!runEarliestBefore(t, lock)) {
        now_ = t;
    }
    return now_;
}

bool VirtualClock::runEarliestBefore(Duration t, std::unique_lock<std::mutex>& lock) {
    const auto earliest =
        std::min_element(sleepers_.begin(), sleepers_.end(),
                         [](const Sleeper* a, const Sleeper* b) { return a->wakeAt < b->wakeAt; });
    if (earliest == sleepers_.end() || (*earliest)->wakeAt >= t) {
        return false;
    }
    now_ = (*earliest)->wakeAt;
    std::erase_if(sleepers_, [this](Sleeper* sleeper) {
        if (sleeper->wakeAt != now_) {
            return false;
        }
        sleeper->woken = true;
        ++running_;
        wake(*sleeper);
        return true;
    });
    settle(lock);
    return true;
}

void VirtualClock::runFor(Duration d) {
    runUntil(now() + d);
}

void VirtualClock::keepPauses(bool keep) {
    std::lock_guard lock(mutex_);
    keepPauses_ = keep;
    if (!keep) {
        pauses_.clear();
    }
}

std::vector<VirtualClock::Pause> VirtualClock::pauses() const {
    std::lock_guard lock(mutex_);
    return std::vector<Pause>(pauses_.begin(), pauses_.end());
}

void VirtualClock::holdScans(bool hold) {
    std::unique_lock lock(mutex_);
    holding_ = hold;
    if (hold) {
        return;
    }
    releaseHeld();
    settle(lock);
}

int VirtualClock::releaseScan() {
    std::unique_lock lock(mutex_);
    settle(lock);
    const int released = releaseHeld();
    settle(lock);
    return released;
}

int VirtualClock::pausedThreads() const {
    std::lock_guard lock(mutex_);
    return static_cast<int>(sleepers_.size());
}

int VirtualClock::heldThreads() const {
    std::lock_guard lock(mutex_);
    return static_cast<int>(held_.size());
}

void VirtualClock::atScanStart() {
    if (!orbel::isDriverThread()) {
        return;
    }
    std::unique_lock lock(mutex_);
    if (!holding_) {
        return;
    }
    Ticket ticket;
    waitIn(held_, lock, ticket, ticket.released);
    lock.unlock();
    orbel::endIfRequested();
}

void VirtualClock::fiberStarting(orbel::DriverFiber& fiber) {
    std::lock_guard lock(mutex_);
    ++running_;
    ready_.push_back(&fiber);
}

void VirtualClock::threadStarting() {
    std::lock_guard lock(mutex_);
    ++running_;
}

void VirtualClock::threadEnding() {
    std::lock_guard lock(mutex_);
    // A fiber ended from outside (orbel::endDriverThread) may still be waiting its turn.
    if (orbel::DriverFiber* fiber = orbel::currentFiber()) {
        std::erase(ready_, fiber);
    }
    stoppedRunning();
}

void VirtualClock::pause(const timespec& request) {
    if (!orbel::isDriverThread()) {
        return;
    }
    std::unique_lock lock(mutex_);
    const Duration duration = durationOf(request);
    if (keepPauses_) {
        pauses_.push_back(Pause{orbel::currentThreadDriver(), now_, duration});
    }
    Sleeper sleeper;
    sleeper.wakeAt = now_ + duration;
    waitIn(sleepers_, lock, sleeper, sleeper.woken);
}

// A fiber whose end is requested is resumed by the host that ends it, so only threads are woken.
void VirtualClock::wakeAll() {
    std::lock_guard lock(mutex_);
    for (Sleeper* sleeper : sleepers_) {
        sleeper->wake.notify_one();
    }
    for (Ticket* ticket : held_) {
        ticket->wake.notify_one();
    }
}

void VirtualClock::settle(std::unique_lock<std::mutex>& lock) {
    while (!ready_.empty()) {
        orbel::DriverFiber* fiber = ready_.front();
        ready_.pop_front();
        lock.unlock();
        orbel::resumeFiber(*fiber);
        lock.lock();
    }
    settled_.wait(lock, [this] { return running_ <= 0; });
}

void VirtualClock::wake(Waiter& waiter) {
    if (waiter.fiber != nullptr) {
        ready_.push_back(waiter.fiber);
    } else {
        waiter.wake.notify_one();
    }
}

template <class Done>
void VirtualClock::wait(std::unique_lock<std::mutex>& lock, Waiter& waiter, Done done) {
    if (waiter.fiber == nullptr) {
        waiter.wake.wait(lock, [&done] { return done() || orbel::endRequested(); });
        return;
    }
    // Resumed when made ready, or by the host that ends it; anything else suspends it again.
    while (!done() && !orbel::endRequested()) {
        lock.unlock();
        orbel::suspendFiber();
        lock.lock();
    }
}

template <class Kind>
void VirtualClock::waitIn(std::vector<Kind*>& waiting, std::unique_lock<std::mutex>& lock,
                          Kind& waiter, const bool& letGo) {
    waiting.push_back(&waiter);
    stoppedRunning();
    wait(lock, waiter, [&letGo] { return letGo; });
    if (!letGo) {
        std::erase(waiting, &waiter);
        ++running_;
    }
}

int VirtualClock::releaseHeld() {
    const int released = static_cast<int>(held_.size());
    for (Ticket* ticket : held_) {
        ticket->released = true;
        ++running_;
        wake(*ticket);
    }
    held_.clear();
    return released;
}

void VirtualClock::stoppedRunning() {
    if (--running_ <= 0) {
        settled_.notify_all();
    }
}

}  // namespace vplc
