// SPDX-License-Identifier: MIT
#include "axlsim/render/StandardOutput.h"

#include <unistd.h>

#include <csignal>
#include <cstring>
#include <iostream>

namespace axlsim {

StandardOutput::StandardOutput() : sink_(STDOUT_FILENO, false), previous_(std::cout.rdbuf(&sink_)) {
    std::signal(SIGPIPE, SIG_IGN);
}

StandardOutput::~StandardOutput() {
    std::cout.rdbuf(previous_);
}

bool StandardOutput::written(const std::string& context) {
    if (sink_.flush()) {
        return true;
    }
    if (!told_) {
        std::cerr << "axlsim: cannot write the standard output: " << std::strerror(sink_.error())
                  << context << '\n';
        told_ = true;
    }
    return false;
}

}  // namespace axlsim
