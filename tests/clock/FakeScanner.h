// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <chrono>
#include <functional>

#include "PosixThread.h"
#include "SI_base.h"

namespace clocktest {

// A driver whose thread scans like a real one: a few 1 ms pauses first, then for ever a bus copy
// of the inputs followed by a pause of one scan period. `onScan` runs after each bus copy.
class FakeScanner : public CSI_base, private CPosixThread {
public:
    FakeScanner(int initialPauses, std::chrono::nanoseconds period,
                std::function<void()> onScan = {});
    ~FakeScanner() override;

    void initialize() override;  // starts the thread
    void onReceiveEvent(stEventParams_t) override {}
    int scans() const { return scans_.load(); }
    void joinThread() { CPosixThread::join(); }

private:
    void run() override;

    int initialPauses_;
    std::chrono::nanoseconds period_;
    std::function<void()> onScan_;
    std::atomic<int> scans_{0};
};

}  // namespace clocktest
