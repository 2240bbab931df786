// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/render/JsonRenderer.h"
#include "axlsim/run/Happening.h"
#include "axlsim/run/RunResult.h"

namespace axlsim {

// A run as one self-contained HTML file: the configuration's summary, the waveform of every pin,
// channel and event over the whole run (drawn by the live page's chart), and the timeline as a
// table. Fed the timeline as the run goes, it keeps what a long run's report can show: the first
// and the last lines of the table, and of the waveforms' changes all of a short run's, or, past
// that, the first and the last of each signal in each of 2,000 equal parts of the run. The
// report says what it left out, and that the run was interrupted if it was.
class HtmlReport {
public:
    // Lines of the table kept from the start and from the end of a long timeline.
    static constexpr std::size_t kFirstLines = 10000;
    static constexpr std::size_t kLastLines = 10000;
    // Changes of the waveforms kept whole; past them, they are thinned out.
    static constexpr std::size_t kWholeChanges = 50000;
    static constexpr int64_t kParts = 2000;

    // `plannedEnd`: where the run is to end, which sets the parts of a long run.
    HtmlReport(const Config& config, std::chrono::nanoseconds plannedEnd);

    // The next happening of the timeline, in timeline order.
    void happening(const Happening& happening);

    // `interruption`: what stopped the run before its end ("SIGINT"), or empty.
    void write(std::ostream& out, const RunResult& result, const std::string& interruption) const;

private:
    struct Change {
        std::string line;
        std::string signal;
        int64_t part = 0;
    };
    struct Kept {
        int64_t part = 0;
        std::size_t first = 0;
        std::optional<std::size_t> last;
    };

    void keepChange(Change change);

    const Config& config_;
    std::ostream nowhere_{nullptr};
    JsonRenderer renderer_;
    std::chrono::nanoseconds partLength_;
    uint64_t lines_ = 0;
    std::vector<std::string> first_;
    std::deque<std::string> last_;
    uint64_t changes_ = 0;
    bool thinned_ = false;
    std::vector<Change> kept_;
    std::map<std::string, Kept> bySignal_;  // once thinned: each signal's changes in its part
};

}  // namespace axlsim
