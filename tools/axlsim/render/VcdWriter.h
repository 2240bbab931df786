// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <ostream>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/Happening.h"
#include "axlsim/run/RunResult.h"

namespace axlsim {

// A Value Change Dump of a run, for a waveform viewer such as GTKWave: every pin and channel of
// every module on the bus (inputs as the terminals see them, outputs as the bus holds them) and
// every event id the drivers publish, on the run's clock in microseconds. Written as the run
// goes: the header from the configuration first, then each change as it settles, so that the
// dump of a run that is stopped is complete up to where it stopped.
class VcdWriter {
public:
    // Writes the header and the values at time 0.
    VcdWriter(std::ostream& out, const Config& config);
    ~VcdWriter();
    VcdWriter(const VcdWriter&) = delete;
    VcdWriter& operator=(const VcdWriter&) = delete;

    // The next happening of the timeline, in timeline order.
    void change(const Happening& happening);

    // The time at which the run ended.
    void finish(std::chrono::nanoseconds end);

private:
    class Dump;
    std::unique_ptr<Dump> dump_;
};

// The dump of a whole run at once, from its timeline.
void writeVcd(std::ostream& out, const Config& config, const RunResult& result);

}  // namespace axlsim
