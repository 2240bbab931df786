// SPDX-License-Identifier: MIT
#pragma once

#include <streambuf>
#include <string>

#include "axlsim/render/OutputSink.h"

namespace axlsim {

// While it lives, std::cout goes through an OutputSink on standard output, so that a failed write
// is noticed when it happens and told with its own reason; a closed pipe is such a failure rather
// than the end of the program (SIGPIPE is ignored from then on).
class StandardOutput {
public:
    StandardOutput();
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    OutputSink& sink() { return sink_; }

    // Once everything is written: false, said once on standard error with `context` after the
    // reason, when it could not be.
    bool written(const std::string& context = "");

private:
    OutputSink sink_;
    std::streambuf* previous_;
    bool told_ = false;
};

}  // namespace axlsim
