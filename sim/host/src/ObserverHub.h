// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

#include "HostRecords.h"
#include "StderrObserver.h"
#include "orbel/HostObserver.h"

class CSI_base;

namespace orbel {

// Hands every report of the library to the registered observers, one report at a time, or to
// standard error while none is registered. Reporting never throws: an observer that throws only
// loses that report.
class ObserverHub {
public:
    static ObserverHub& instance();

    void add(HostObserver& observer);
    void remove(HostObserver& observer);

    // Calls a report's callback on one observer (`call` is the report's own lambda).
    using Delivery = void (*)(HostObserver& observer, const void* call);

    // Hands one report to the observers: `call(observer)` makes it, e.g.
    // `report([&](HostObserver& o) { o.threadStarted(driver); })`.
    template <class Call>
    void report(const Call& call) noexcept {
        deliver([](HostObserver& o, const void* c) { (*static_cast<const Call*>(c))(o); }, &call);
    }

    // A line of the library's own about a driver, reported as a log line at kHostWarningLevel.
    void warn(const CSI_base* driver, std::string_view text) noexcept;

private:
    ObserverHub() = default;

    void deliver(Delivery delivery, const void* call) noexcept;

    std::mutex mutex_;
    std::vector<HostObserver*> observers_;
    StderrObserver fallback_;
};

}  // namespace orbel
