// SPDX-License-Identifier: MIT
#include "FakeScanner.h"

#include <ctime>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "orbel/DriverThreads.h"

namespace clocktest {

namespace {

void pauseFor(std::chrono::nanoseconds duration) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
    timespec request{static_cast<time_t>(seconds.count()),
                     static_cast<long>((duration - seconds).count())};
    nanosleep(&request, &request);
}

}  // namespace

FakeScanner::FakeScanner(int initialPauses, std::chrono::nanoseconds period,
                         std::function<void()> onScan)
    : CSI_base(stSP_Params_t{}, {}, {}),
      CPosixThread(0),
      initialPauses_(initialPauses),
      period_(period),
      onScan_(std::move(onScan)) {}

// A real driver leaves ending its thread to the host; the fake ends its own so that no test can
// forget it.
FakeScanner::~FakeScanner() {
    orbel::endDriverThread(*this);
}

void FakeScanner::initialize() {
    CPosixThread::start();
}

void FakeScanner::run() {
    using namespace std::chrono_literals;
    for (int pause = 0; pause < initialPauses_; ++pause) {
        pauseFor(1ms);
    }
    for (;;) {
        ArpPlcAxio_ReadFromAxioToGds(0);
        ++scans_;
        if (onScan_) {
            onScan_();
        }
        pauseFor(period_);
    }
}

}  // namespace clocktest
