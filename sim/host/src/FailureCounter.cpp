// SPDX-License-Identifier: MIT
#include "orbel/FailureCounter.h"

namespace orbel {

void FailureCounter::logged(const CSI_base*, int level, std::string_view, std::string_view) {
    if (level == kFailureLevel) {
        failureLines_.fetch_add(1);
    }
}

void FailureCounter::stopped(const CSI_base*, const stServiceParams_t*, std::string_view) {
    stops_.fetch_add(1);
}

void FailureCounter::threadEnded(const CSI_base*, std::string_view how) {
    if (how != kThreadEndedByHost && how != kThreadRunReturned) {
        exceptions_.fetch_add(1);
    }
}

}  // namespace orbel
