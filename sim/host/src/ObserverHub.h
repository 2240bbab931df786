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

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) noexcept;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) noexcept;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) noexcept;
    void threadStarted(const CSI_base* driver) noexcept;
    void threadEnded(const CSI_base* driver, std::string_view how) noexcept;

    // A line of the library's own about a driver, reported as a log line at kHostWarningLevel.
    void warn(const CSI_base* driver, std::string_view text) noexcept;

private:
    ObserverHub() = default;

    template <class Report>
    void notify(const Report& report) noexcept;

    std::mutex mutex_;
    std::vector<HostObserver*> observers_;
    StderrObserver fallback_;
};

}  // namespace orbel
