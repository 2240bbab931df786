// SPDX-License-Identifier: MIT
#include "axlsim/run/RunTally.h"

#include <algorithm>

namespace axlsim {

RunTally::RunTally(std::size_t drivers) : drivers_(drivers) {}

void RunTally::count(const Happening& happening) {
    if (std::holds_alternative<Happening::Restart>(happening.what)) {
        ++restarts_;
    }
    if (happening.driver < 0 || static_cast<std::size_t>(happening.driver) >= drivers_.size()) {
        return;
    }
    RunResult::DriverState& driver = drivers_[static_cast<std::size_t>(happening.driver)];
    if (std::holds_alternative<Happening::Publish>(happening.what)) {
        ++driver.publishes;
    } else if (std::holds_alternative<Happening::Stop>(happening.what)) {
        driver.stopped = true;
    } else if (std::holds_alternative<Happening::Exception>(happening.what)) {
        driver.threw = true;
    }
}

void RunTally::summarise(RunResult& result, bool expectStop) const {
    result.restarts = restarts_;
    bool failed = false;
    for (std::size_t i = 0; i < std::min(drivers_.size(), result.drivers.size()); ++i) {
        RunResult::DriverState& state = result.drivers[i];
        state.publishes = drivers_[i].publishes;
        state.stopped = drivers_[i].stopped;
        state.threw = drivers_[i].threw;
        failed = failed || state.stopped || state.threw;
    }
    result.wentAsExpected = failed == expectStop;
}

}  // namespace axlsim
