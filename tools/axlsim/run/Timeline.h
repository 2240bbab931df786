// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "axlsim/run/Happening.h"

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

    // The happenings whose place can no longer change, in order, that no call has returned
    // before: those of earlier segments, and those of this segment stamped before the clock's
    // present (whatever comes later is stamped at the present or after it).
    std::vector<Happening> settle();

    // The same for all the rest; call when nothing more will be added.
    std::vector<Happening> settleAll();

    // settle() and settleAll() for a run that shows nothing as it goes: nothing is handed back,
    // so nothing is copied.
    void settleUnseen(bool all);

    // Everything, in order.
    std::vector<Happening> ordered() const;

    // The same, taken out of the timeline, which is left empty: for the end of a run.
    std::vector<Happening> takeOrdered();

    // From now on settle() hands what it settles to its caller only, and ordered() no longer
    // shows it: a run without end keeps only what is still to be settled.
    void forgetSettled();

    // Publications added since the last call, by time and then by driver; kept only after the
    // first call, for a host that answers them.
    std::vector<Happening> newPublications();
    std::chrono::nanoseconds now() const;

private:
    struct Entry {
        uint64_t segment;
        Happening happening;
    };

    Clock clock_;
    mutable std::mutex mutex_;
    uint64_t segment_ = 0;
    // Settles; hands back what it settles only if `handBack`.
    std::vector<Happening> take(bool all, bool handBack);

    Listener listener_;
    std::vector<Entry> entries_;  // not yet settled, in the order they came
    std::vector<Happening> settled_;
    bool keepSettled_ = true;
    bool keepPublications_ = false;
    std::vector<Happening> publications_;  // since newPublications() was last called
};

}  // namespace axlsim
