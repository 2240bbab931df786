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

template <class Report>
void deliver(const Report& report, HostObserver& observer) noexcept {
    try {
        report(observer);
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

template <class Report>
void ObserverHub::notify(const Report& report) noexcept {
    if (insideCallback) {
        deliver(report, fallback_);
        return;
    }
    try {
        std::lock_guard lock(mutex_);
        insideCallback = true;
        if (observers_.empty()) {
            deliver(report, fallback_);
        }
        for (HostObserver* observer : observers_) {
            deliver(report, *observer);
        }
        insideCallback = false;
    } catch (...) {
        insideCallback = false;
    }
}

void ObserverHub::logged(const CSI_base* driver, int level, std::string_view format,
                         std::string_view text) noexcept {
    notify([&](HostObserver& o) { o.logged(driver, level, format, text); });
}

void ObserverHub::published(const CSI_base* driver, uint32_t id, uint32_t size,
                            std::span<const uint8_t> payload) noexcept {
    notify([&](HostObserver& o) { o.published(driver, id, size, payload); });
}

void ObserverHub::stopped(const CSI_base* driver, const stServiceParams_t* service,
                          std::string_view message) noexcept {
    notify([&](HostObserver& o) { o.stopped(driver, service, message); });
}

void ObserverHub::threadStarted(const CSI_base* driver) noexcept {
    notify([&](HostObserver& o) { o.threadStarted(driver); });
}

void ObserverHub::threadEnded(const CSI_base* driver, std::string_view how) noexcept {
    notify([&](HostObserver& o) { o.threadEnded(driver, how); });
}

void ObserverHub::warn(const CSI_base* driver, std::string_view text) noexcept {
    logged(driver, kHostWarningLevel, text, text);
}

}  // namespace orbel
