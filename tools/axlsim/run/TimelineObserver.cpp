// SPDX-License-Identifier: MIT
#include "axlsim/run/TimelineObserver.h"

#include <string>
#include <vector>

namespace axlsim {

namespace {

constexpr std::string_view kEndedByHost = "ended by the host";

}  // namespace

TimelineObserver::TimelineObserver(Timeline& timeline) : timeline_(timeline) {}

void TimelineObserver::attach(const CSI_base* driver, int index) {
    std::lock_guard lock(mutex_);
    indices_[driver] = index;
}

void TimelineObserver::setHostDriver(int index) {
    hostDriver_ = index;
}

int TimelineObserver::indexOf(const CSI_base* driver) const {
    std::lock_guard lock(mutex_);
    const auto it = indices_.find(driver);
    if (it != indices_.end()) {
        return it->second;
    }
    return hostDriver_;
}

void TimelineObserver::logged(const CSI_base* driver, int level, std::string_view format,
                              std::string_view text) {
    timeline_.add(indexOf(driver), Happening::Log{level, std::string(format), std::string(text)});
}

void TimelineObserver::published(const CSI_base* driver, uint32_t id, uint32_t size,
                                 std::span<const uint8_t> payload) {
    timeline_.add(
        indexOf(driver),
        Happening::Publish{id, size, std::vector<uint8_t>(payload.begin(), payload.end())});
}

void TimelineObserver::stopped(const CSI_base* driver, const stServiceParams_t* service,
                               std::string_view message) {
    std::optional<uint32_t> eventId;
    if (service != nullptr) {
        eventId = service->nEventId;
    }
    timeline_.add(indexOf(driver), Happening::Stop{std::string(message), eventId});
}

void TimelineObserver::threadStarted(const CSI_base*) {}

// A thread that the host ends at the close of the run is no news; one that ends by itself is.
void TimelineObserver::threadEnded(const CSI_base* driver, std::string_view how) {
    if (how == kEndedByHost) {
        return;
    }
    timeline_.add(indexOf(driver),
                  Happening::Note{"the driver's thread ended: " + std::string(how)});
}

}  // namespace axlsim
