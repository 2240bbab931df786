// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <map>
#include <mutex>

#include "axlsim/run/Timeline.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

namespace axlsim {

// Puts what the drivers do through the host library on the timeline, each happening under the
// index of its driver. Registered with the host library for its lifetime.
class TimelineObserver final : public orbel::HostObserver {
public:
    explicit TimelineObserver(Timeline& timeline);

    void attach(const CSI_base* driver, int index);

    // The driver the host thread is calling (or creating) now; what the library reports for a
    // driver object it has not been told of belongs to it: the version line of a driver whose
    // construction then throws.
    void setHostDriver(int index);
    int hostDriver() const { return hostDriver_; }

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadStarted(const CSI_base* driver) override;
    void threadEnded(const CSI_base* driver, std::string_view how) override;

private:
    int indexOf(const CSI_base* driver) const;

    Timeline& timeline_;
    mutable std::mutex mutex_;
    std::map<const CSI_base*, int> indices_;
    std::atomic<int> hostDriver_{-1};
    orbel::ObserverRegistration registration_{*this};
};

}  // namespace axlsim
