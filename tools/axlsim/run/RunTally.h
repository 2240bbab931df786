// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

#include "axlsim/run/Happening.h"
#include "axlsim/run/RunResult.h"

namespace axlsim {

// What a run's end state tells of its timeline (restarts, each driver's publications, stops and
// exceptions), counted as the happenings come, so that a run need not keep its timeline to sum
// it up. The order does not matter.
class RunTally {
public:
    explicit RunTally(std::size_t drivers);

    void count(const Happening& happening);

    // Fills in the counts of `result`, whose drivers are there, and whether it went as a
    // configuration that does or does not `expectStop` expects.
    void summarise(RunResult& result, bool expectStop) const;

private:
    int restarts_ = 0;
    std::vector<RunResult::DriverState> drivers_;  // all but `created`, which the run knows
};

}  // namespace axlsim
