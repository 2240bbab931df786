// SPDX-License-Identifier: MIT
#include "Findings.h"

#include <utility>

namespace fuzz {

void Findings::add(std::string finding) {
    std::lock_guard lock(mutex_);
    findings_.push_back(std::move(finding));
}

void Findings::expect(bool holds, const std::string& finding) {
    if (!holds) {
        add(finding);
    }
}

bool Findings::empty() const {
    std::lock_guard lock(mutex_);
    return findings_.empty();
}

std::string Findings::text() const {
    std::lock_guard lock(mutex_);
    std::string text;
    for (const std::string& finding : findings_) {
        text += finding + "\n";
    }
    return text;
}

void Findings::clear() {
    std::lock_guard lock(mutex_);
    findings_.clear();
}

}  // namespace fuzz
