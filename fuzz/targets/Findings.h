// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace fuzz {

// What a fuzz target found wrong with one input, collected from any thread.
class Findings {
public:
    void add(std::string finding);
    // Adds `finding` unless `holds`.
    void expect(bool holds, const std::string& finding);

    bool empty() const;
    // Every finding, one per line; empty when there is none.
    std::string text() const;
    void clear();

private:
    mutable std::mutex mutex_;
    std::vector<std::string> findings_;
};

}  // namespace fuzz
