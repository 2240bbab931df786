#include "axlsim/Timeline.h"

#include <algorithm>
#include <utility>

namespace axlsim {

Timeline::Timeline(Clock clock) : clock_(std::move(clock)) {}

void Timeline::add(int driver, Happening::What what) {
    std::lock_guard lock(mutex_);
    // Stamped under the lock, so that the order of arrival and the order of time agree.
    Happening happening{clock_(), driver, std::move(what)};
    if (listener_)
        listener_(happening);
    entries_.push_back(Entry{segment_, std::move(happening)});
}

void Timeline::nextSegment() {
    std::lock_guard lock(mutex_);
    ++segment_;
}

void Timeline::setListener(Listener listener) {
    std::lock_guard lock(mutex_);
    listener_ = std::move(listener);
}

std::vector<Happening> Timeline::ordered() const {
    std::vector<Entry> entries;
    {
        std::lock_guard lock(mutex_);
        entries.assign(entries_.begin(), entries_.end());
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.segment != b.segment)
            return a.segment < b.segment;
        if (a.happening.t != b.happening.t)
            return a.happening.t < b.happening.t;
        return a.happening.driver < b.happening.driver;
    });
    std::vector<Happening> happenings;
    happenings.reserve(entries.size());
    for (Entry& entry : entries)
        happenings.push_back(std::move(entry.happening));
    return happenings;
}

std::vector<Happening> Timeline::since(std::size_t& cursor) const {
    std::vector<Happening> happenings;
    {
        std::lock_guard lock(mutex_);
        for (std::size_t i = std::max(cursor, forgotten_) - forgotten_; i < entries_.size(); ++i)
            happenings.push_back(entries_[i].happening);
        cursor = forgotten_ + entries_.size();
    }
    std::stable_sort(happenings.begin(), happenings.end(),
                     [](const Happening& a, const Happening& b) {
                         if (a.t != b.t)
                             return a.t < b.t;
                         return a.driver < b.driver;
                     });
    return happenings;
}

std::chrono::nanoseconds Timeline::now() const {
    return clock_();
}

void Timeline::forget(std::size_t cursor) {
    std::lock_guard lock(mutex_);
    if (cursor <= forgotten_)
        return;
    const std::size_t drop = std::min(cursor - forgotten_, entries_.size());
    entries_.erase(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(drop));
    forgotten_ += drop;
}

}  // namespace axlsim
