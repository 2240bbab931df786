// SPDX-License-Identifier: MIT
#pragma once

#include <ostream>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/RunResult.h"

namespace axlsim {

// A finished run as one self-contained HTML file: the configuration's summary, the waveform of
// every pin, channel and event over the whole run (drawn by the live page's chart), and the
// timeline as a table.
class HtmlReport {
public:
    static void write(std::ostream& out, const Config& config, const RunResult& result);
};

}  // namespace axlsim
