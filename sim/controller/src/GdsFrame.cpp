// SPDX-License-Identifier: MIT
#include "GdsFrame.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "FrameLayout.h"

namespace vplc {

namespace {

// The frames that the calling thread holds locked. A frame is never destroyed while a thread holds
// its lock (the controller keeps it), so an entry never outlives its frame.
// Initial-exec: the library is loaded with the program, and every Begin and End looks here.
thread_local std::vector<std::pair<const GdsFrame*, Access>> callerHolds
    __attribute__((tls_model("initial-exec")));

}  // namespace

GdsFrame::GdsFrame(Frame which, std::size_t size)
    : which_(which), size_(size), data_(new char[size]()) {}

std::string_view GdsFrame::bufferId() const {
    return FrameLayout::bufferId(which_);
}

void GdsFrame::lock(Access access) {
    if (access == Access::Read) {
        dataLock_.lock_shared();
    } else {
        dataLock_.lock();
    }
}

bool GdsFrame::tryLock(Access access) {
    return access == Access::Read ? dataLock_.try_lock_shared() : dataLock_.try_lock();
}

void GdsFrame::unlock(Access access) {
    if (access == Access::Read) {
        dataLock_.unlock_shared();
    } else {
        dataLock_.unlock();
    }
}

std::optional<Access> GdsFrame::heldByCaller() const {
    auto held = std::find_if(callerHolds.begin(), callerHolds.end(),
                             [this](const auto& entry) { return entry.first == this; });
    if (held == callerHolds.end()) {
        return std::nullopt;
    }
    return held->second;
}

void GdsFrame::addCaller(Access access) {
    callerHolds.emplace_back(this, access);
    ++holders_;
}

void GdsFrame::removeCaller() {
    const auto removed =
        std::erase_if(callerHolds, [this](const auto& entry) { return entry.first == this; });
    holders_ -= static_cast<int>(removed);
}

}  // namespace vplc
