// SPDX-License-Identifier: MIT
#include "ObserverHub.h"

#include <algorithm>
#include <stdexcept>

namespace orbel {

namespace {

// Set while this thread runs an observer callback, so that a callback that reaches the library
// again (an observer that logs) does not wait for the lock it already holds.
thread_local bool insideCallback = false;

void refuseInsideCallback() {
    if (insideCallback) {
        throw std::logic_error("orbel: observers cannot be added or removed inside a callback");
    }
}

void deliverTo(HostObserver& observer, ObserverHub::Delivery delivery, const void* call) noexcept {
    try {
        delivery(observer, call);
    } catch (...) {
    }
}

}  // namespace

ObserverHub& ObserverHub::instance() {
    // Never destroyed: driver threads may still report while the process exits.
    static ObserverHub* const hub = new ObserverHub;
    return *hub;
}

void ObserverHub::add(HostObserver& observer) {
    refuseInsideCallback();
    std::lock_guard lock(mutex_);
    observers_.push_back(&observer);
}

void ObserverHub::remove(HostObserver& observer) {
    refuseInsideCallback();
    std::lock_guard lock(mutex_);
    observers_.erase(std::remove(observers_.begin(), observers_.end(), &observer),
                     observers_.end());
}

void ObserverHub::deliver(Delivery delivery, const void* call) noexcept {
    if (insideCallback) {
        deliverTo(fallback_, delivery, call);
        return;
    }
    try {
        std::lock_guard lock(mutex_);
        insideCallback = true;
        if (observers_.empty()) {
            deliverTo(fallback_, delivery, call);
        }
        for (HostObserver* observer : observers_) {
            deliverTo(*observer, delivery, call);
        }
        insideCallback = false;
    } catch (...) {
        insideCallback = false;
    }
}

void ObserverHub::warn(const CSI_base* driver, std::string_view text) noexcept {
    report([&](HostObserver& o) { o.logged(driver, kHostWarningLevel, text, text); });
}

}  // namespace orbel
