// SPDX-License-Identifier: MIT
#include "RatioReporter.h"

#include <unistd.h>

#include <cstdio>
#include <ostream>
#include <string_view>

namespace axlbench {

namespace {

constexpr std::string_view kDriverSuffix = "/driver";
constexpr std::string_view kFloorSuffix = "/floor";

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

}  // namespace

RatioReporter::RatioReporter(double target)
    : ConsoleReporter(isatty(STDOUT_FILENO) != 0 ? OO_ColorTabular : OO_Tabular), target_(target) {}

void RatioReporter::ReportRuns(const std::vector<Run>& reports) {
    ConsoleReporter::ReportRuns(reports);
    for (const Run& run : reports) {
        const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
        if (run.error_occurred || (run.run_type == Run::RT_Aggregate && !median)) {
            continue;
        }
        const std::string& name = run.run_name.function_name;
        const bool driver = endsWith(name, kDriverSuffix);
        if (!driver && !endsWith(name, kFloorSuffix)) {
            continue;
        }
        const std::string pair =
            name.substr(0, name.size() - (driver ? kDriverSuffix.size() : kFloorSuffix.size()));
        if (sides_.find(pair) == sides_.end()) {
            order_.push_back(pair);
        }
        const auto batch = run.counters.find(kBatchCounter);
        const double perIteration = batch == run.counters.end() ? 1.0 : batch->second.value;
        const double seconds = run.GetAdjustedRealTime() /
                               benchmark::GetTimeUnitMultiplier(run.time_unit) / perIteration;
        (driver ? sides_[pair].driver : sides_[pair].floor) = seconds;
    }
}

void RatioReporter::Finalize() {
    ConsoleReporter::Finalize();
    if (order_.empty()) {
        return;
    }
    std::ostream& out = GetOutputStream();
    char line[160];
    std::snprintf(line, sizeof line, "\n%-28s %14s %14s %8s  (target <= %.2f)\n", "driver / floor",
                  "driver", "floor", "ratio", target_);
    out << line;
    for (const std::string& pair : order_) {
        const Sides& sides = sides_[pair];
        if (sides.driver <= 0.0 || sides.floor <= 0.0) {
            continue;
        }
        const double ratio = sides.driver / sides.floor;
        std::snprintf(line, sizeof line, "%-28s %11.1f ns %11.1f ns %8.3f  %s\n", pair.c_str(),
                      sides.driver * 1e9, sides.floor * 1e9, ratio,
                      ratio <= target_ ? "met" : "missed");
        out << line;
    }
    out.flush();
}

}  // namespace axlbench
