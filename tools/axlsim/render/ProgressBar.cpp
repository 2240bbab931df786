// SPDX-License-Identifier: MIT
#include "axlsim/render/ProgressBar.h"

#include <string>

namespace axlsim {

namespace {

constexpr int kWidth = 40;

}  // namespace

ProgressBar::ProgressBar(std::ostream& out) : out_(out) {}

ProgressBar::~ProgressBar() {
    if (shown_ >= 0) {
        out_ << '\r' << std::string(kWidth + 40, ' ') << '\r' << std::flush;
    }
}

void ProgressBar::update(std::chrono::nanoseconds now, std::chrono::nanoseconds end) {
    if (end.count() <= 0) {
        return;
    }
    // In doubles: a hundred times a long run's nanoseconds do not fit 64 bits.
    const int percent = static_cast<int>(100.0 * static_cast<double>(now.count()) /
                                         static_cast<double>(end.count()));
    if (percent == shown_) {
        return;
    }
    shown_ = percent;
    const int filled = percent * kWidth / 100;
    const auto seconds = [](std::chrono::nanoseconds t) {
        return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(t).count());
    };
    out_ << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
         << std::string(static_cast<std::size_t>(kWidth - filled), '.') << "] " << percent << "%  "
         << seconds(now) << " s of " << seconds(end) << " s virtual" << std::flush;
}

}  // namespace axlsim
