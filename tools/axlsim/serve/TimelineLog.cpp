// SPDX-License-Identifier: MIT
#include "axlsim/serve/TimelineLog.h"

#include <algorithm>

namespace axlsim {

TimelineLog::TimelineLog(std::size_t keep) : keep_(keep) {}

void TimelineLog::append(nlohmann::ordered_json object) {
    {
        std::lock_guard lock(mutex_);
        object["seq"] = first_ + lines_.size();
        lines_.push_back(
            object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
        if (lines_.size() > keep_) {
            lines_.pop_front();
            ++first_;
        }
    }
    changed_.notify_all();
}

TimelineLog::Lines TimelineLog::after(uint64_t seq, std::size_t most) const {
    std::lock_guard lock(mutex_);
    return afterLocked(seq, most);
}

TimelineLog::Lines TimelineLog::waitAfter(uint64_t seq, std::size_t most,
                                          std::chrono::milliseconds patience) const {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, patience, [&] { return closed_ || first_ + lines_.size() - 1 > seq; });
    return afterLocked(seq, most);
}

TimelineLog::Lines TimelineLog::afterLocked(uint64_t seq, std::size_t most) const {
    Lines result;
    result.first = std::max(seq + 1, first_);
    const uint64_t end = first_ + lines_.size();
    for (uint64_t s = result.first; s < end && result.lines.size() < most; ++s) {
        result.lines.push_back(lines_[static_cast<std::size_t>(s - first_)]);
    }
    return result;
}

uint64_t TimelineLog::last() const {
    std::lock_guard lock(mutex_);
    return first_ + lines_.size() - 1;
}

void TimelineLog::close() {
    {
        std::lock_guard lock(mutex_);
        closed_ = true;
    }
    changed_.notify_all();
}

bool TimelineLog::closed() const {
    std::lock_guard lock(mutex_);
    return closed_;
}

}  // namespace axlsim
