#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "axlsim/Happening.h"

namespace axlsim {

// Everything that happens in a run, stamped with the run's clock as it is added. Safe to add to
// from any thread.
//
// A run alternates between host steps and stretches of clock time. Within one stretch, driver
// threads that wake at the same instant run side by side, so their happenings arrive in any
// order; ordered() shows each segment by time and then by driver, which makes a run on the
// virtual clock read the same every time without changing any driver's own order.
class Timeline {
public:
    using Clock = std::function<std::chrono::nanoseconds()>;
    using Listener = std::function<void(const Happening&)>;

    explicit Timeline(Clock clock);

    void add(int driver, Happening::What what);

    // Starts a new segment: what is added from now on is shown after everything added before.
    void nextSegment();

    // Called with each happening as it is added, under the timeline's lock.
    void setListener(Listener listener);

    std::vector<Happening> ordered() const;

    // What was added after the first `cursor` happenings, by time and then by driver; moves the
    // cursor past it.
    std::vector<Happening> since(std::size_t& cursor) const;
    std::chrono::nanoseconds now() const;

    // Drops the happenings before `cursor` (a cursor of since()), which ordered() then no longer
    // shows: a run without end keeps only what its readers have yet to read.
    void forget(std::size_t cursor);

private:
    struct Entry {
        uint64_t segment;
        Happening happening;
    };

    Clock clock_;
    mutable std::mutex mutex_;
    uint64_t segment_ = 0;
    Listener listener_;
    std::deque<Entry> entries_;
    std::size_t forgotten_ = 0;  // the happenings dropped from the front of entries_
};

}  // namespace axlsim
