// SPDX-License-Identifier: MIT
#include "axlsim/run/Timeline.h"

#include <algorithm>
#include <utility>

namespace axlsim {

Timeline::Timeline(Clock clock) : clock_(std::move(clock)) {}

void Timeline::add(int driver, Happening::What what) {
    std::lock_guard lock(mutex_);
    // Stamped under the lock, so that the order of arrival and the order of time agree.
    Happening happening{clock_(), driver, std::move(what)};
    if (listener_) {
        listener_(happening);
    }
    if (keepPublications_ && std::holds_alternative<Happening::Publish>(happening.what)) {
        publications_.push_back(happening);
    }
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

namespace {

template <class Entry>
void sortEntries(std::vector<Entry>& entries) {
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.segment != b.segment) {
            return a.segment < b.segment;
        }
        if (a.happening.t != b.happening.t) {
            return a.happening.t < b.happening.t;
        }
        return a.happening.driver < b.happening.driver;
    });
}

}  // namespace

std::vector<Happening> Timeline::take(bool all, bool handBack) {
    std::lock_guard lock(mutex_);
    const std::chrono::nanoseconds now = clock_();
    const auto rest = std::stable_partition(
        entries_.begin(), entries_.end(), [this, all, now](const Entry& entry) {
            return all || entry.segment < segment_ || entry.happening.t < now;
        });
    std::vector<Entry> taken(std::make_move_iterator(entries_.begin()),
                             std::make_move_iterator(rest));
    entries_.erase(entries_.begin(), rest);
    sortEntries(taken);
    std::vector<Happening> happenings;
    if (handBack) {
        happenings.reserve(taken.size());
        for (const Entry& entry : taken) {
            happenings.push_back(entry.happening);
        }
    }
    if (keepSettled_) {
        for (Entry& entry : taken) {
            settled_.push_back(std::move(entry.happening));
        }
    }
    return happenings;
}

std::vector<Happening> Timeline::settle() {
    return take(false, true);
}

std::vector<Happening> Timeline::settleAll() {
    return take(true, true);
}

void Timeline::settleUnseen(bool all) {
    take(all, false);
}

std::vector<Happening> Timeline::ordered() const {
    std::vector<Entry> entries;
    std::vector<Happening> happenings;
    {
        std::lock_guard lock(mutex_);
        entries = entries_;
        happenings = settled_;
    }
    sortEntries(entries);
    happenings.reserve(happenings.size() + entries.size());
    for (Entry& entry : entries) {
        happenings.push_back(std::move(entry.happening));
    }
    return happenings;
}

std::vector<Happening> Timeline::takeOrdered() {
    std::lock_guard lock(mutex_);
    sortEntries(entries_);
    std::vector<Happening> happenings = std::move(settled_);
    settled_.clear();
    happenings.reserve(happenings.size() + entries_.size());
    for (Entry& entry : entries_) {
        happenings.push_back(std::move(entry.happening));
    }
    entries_.clear();
    return happenings;
}

void Timeline::forgetSettled() {
    std::lock_guard lock(mutex_);
    keepSettled_ = false;
    settled_.clear();
}

std::vector<Happening> Timeline::newPublications() {
    std::vector<Happening> happenings;
    {
        std::lock_guard lock(mutex_);
        keepPublications_ = true;
        happenings.swap(publications_);
    }
    std::stable_sort(happenings.begin(), happenings.end(),
                     [](const Happening& a, const Happening& b) {
                         if (a.t != b.t) {
                             return a.t < b.t;
                         }
                         return a.driver < b.driver;
                     });
    return happenings;
}

std::chrono::nanoseconds Timeline::now() const {
    return clock_();
}

}  // namespace axlsim
