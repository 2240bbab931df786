// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace axlsim {

// The live timeline as the API hands it out: one JSON object per happening, numbered by "seq"
// from 1 without gaps, the newest `keep` of them kept. Safe to use from any thread.
class TimelineLog {
public:
    struct Lines {
        uint64_t first = 1;  // the seq of the first line, or of the next one when there is none
        std::vector<std::string> lines;
    };

    explicit TimelineLog(std::size_t keep);

    void append(nlohmann::ordered_json object);

    // The lines after `seq`, at most `most` of them. Those no longer kept are left out: `first`
    // then tells where the lines begin.
    Lines after(uint64_t seq, std::size_t most) const;

    // As after(), waiting up to `patience` for a line, unless the log is closed.
    Lines waitAfter(uint64_t seq, std::size_t most, std::chrono::milliseconds patience) const;

    uint64_t last() const;

    // Wakes every waiter for good: the server is going.
    void close();
    bool closed() const;

private:
    Lines afterLocked(uint64_t seq, std::size_t most) const;

    std::size_t keep_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::deque<std::string> lines_;
    uint64_t first_ = 1;  // the seq of lines_.front()
    bool closed_ = false;
};

}  // namespace axlsim
