#include "GdsFrame.h"

#include <algorithm>

#include "FrameLayout.h"

namespace vplc {

GdsFrame::GdsFrame(Frame which, std::size_t size)
    : which_(which), size_(size), data_(new char[size]()) {}

std::string_view GdsFrame::bufferId() const {
    return FrameLayout::bufferId(which_);
}

void GdsFrame::lock(Access access) {
    if (access == Access::Read)
        dataLock_.lock_shared();
    else
        dataLock_.lock();
}

void GdsFrame::unlock(Access access) {
    if (access == Access::Read)
        dataLock_.unlock_shared();
    else
        dataLock_.unlock();
}

std::optional<Access> GdsFrame::heldBy(std::thread::id thread) const {
    auto holder = std::find_if(holders_.begin(), holders_.end(),
                               [thread](const auto& entry) { return entry.first == thread; });
    if (holder == holders_.end())
        return std::nullopt;
    return holder->second;
}

void GdsFrame::addHolder(std::thread::id thread, Access access) {
    holders_.emplace_back(thread, access);
}

void GdsFrame::removeHolder(std::thread::id thread) {
    std::erase_if(holders_, [thread](const auto& entry) { return entry.first == thread; });
}

}  // namespace vplc
