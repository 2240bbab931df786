// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace axlbench {

// The console report, followed by the figure that matters: for every benchmark measured on both
// sides ("<name>/driver" and "<name>/floor"), the driver's time divided by the floor's, per
// operation. A benchmark whose iteration is a batch of operations says how many in the counter
// kBatchCounter. With repetitions, the medians are compared.
class RatioReporter final : public benchmark::ConsoleReporter {
public:
    static constexpr const char* kBatchCounter = "batch";

    explicit RatioReporter(double target);

    void ReportRuns(const std::vector<Run>& reports) override;
    void Finalize() override;

private:
    struct Sides {
        double driver = 0.0;  // seconds per iteration
        double floor = 0.0;
    };

    double target_;
    std::vector<std::string> order_;
    std::map<std::string, Sides> sides_;
};

}  // namespace axlbench
