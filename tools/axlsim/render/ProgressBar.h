// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <ostream>

namespace axlsim {

// A one-line bar on a terminal for a long virtual run, redrawn in place and wiped at the end.
class ProgressBar {
public:
    explicit ProgressBar(std::ostream& out);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void update(std::chrono::nanoseconds now, std::chrono::nanoseconds end);

private:
    std::ostream& out_;
    int shown_ = -1;  // the percentage on screen
};

}  // namespace axlsim
