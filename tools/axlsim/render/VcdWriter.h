// SPDX-License-Identifier: MIT
#pragma once

#include <ostream>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/RunResult.h"

namespace axlsim {

// A Value Change Dump of a run, for a waveform viewer such as GTKWave: every pin and channel of
// every module on the bus (inputs as the terminals see them, outputs as the bus holds them) and
// every event id the drivers publish, on the run's clock in microseconds.
class VcdWriter {
public:
    static void write(std::ostream& out, const Config& config, const RunResult& result);
};

}  // namespace axlsim
