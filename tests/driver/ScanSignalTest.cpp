// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <span>
#include <string_view>
#include <thread>
#include <vector>

#include "hosting/DriverConfig.h"
#include "hosting/HostCalls.h"
#include "orbel/HostObserver.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"

namespace host = hosting::host;
using hosting::DriverConfig;

namespace {

std::atomic<int> signalsHandled{0};

void countSignal(int) {
    signalsHandled.fetch_add(1, std::memory_order_relaxed);
}

int64_t monotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

// Notes when each publication happens and flips the published input on the terminal, so that
// every pass of the scan publishes once: the publication times are the scan times.
class FlippingObserver final : public orbel::HostObserver {
public:
    explicit FlippingObserver(vplc::Station& station) : station_(station) {
        orbel::addObserver(*this);
    }
    ~FlippingObserver() override { orbel::removeObserver(*this); }

    std::vector<int64_t> times() const {
        std::lock_guard lock(mutex_);
        return times_;
    }

    void logged(const CSI_base*, int, std::string_view, std::string_view) override {}
    void published(const CSI_base*, uint32_t, uint32_t, std::span<const uint8_t> payload) override {
        {
            std::lock_guard lock(mutex_);
            times_.push_back(monotonicNanoseconds());
        }
        station_.setDigitalInput(1, 0, payload.empty() || payload[0] == 0);
    }
    void stopped(const CSI_base*, const stServiceParams_t*, std::string_view) override {}
    void threadStarted(const CSI_base*) override {}
    void threadEnded(const CSI_base*, std::string_view) override {}

private:
    vplc::Station& station_;
    mutable std::mutex mutex_;
    std::vector<int64_t> times_;
};

}  // namespace

TEST(ScanInRealTime, ASignalDuringThePauseDoesNotShortenIt) {
    struct sigaction action {};
    action.sa_handler = countSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = 0;  // no SA_RESTART: the pause sees EINTR
    struct sigaction previous {};
    ASSERT_EQ(sigaction(SIGUSR1, &action, &previous), 0);

    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    orbel::Recorder recorder;
    FlippingObserver observer(station);
    auto driver = host::create(DriverConfig::digital().digitalIn(1, "0"));
    host::initialize(*driver);
    ASSERT_TRUE(recorder.waitUntil([&] { return recorder.threadStarts().size() == 1; }));
    const pthread_t driverThread = recorder.threadStarts()[0].handle;

    // The initial publication and the five passes after it.
    constexpr size_t kPublications = 6;
    while (observer.times().size() < kPublications) {
        ASSERT_EQ(pthread_kill(driverThread, SIGUSR1), 0);
        // Paces the signals so that several land in every pause.
        std::this_thread::sleep_for(std::chrono::milliseconds(7));
    }
    driver.reset();
    sigaction(SIGUSR1, &previous, nullptr);

    EXPECT_GT(signalsHandled.load(), 10);
    const auto times = observer.times();
    ASSERT_GE(times.size(), kPublications);
    for (size_t scan = 2; scan < kPublications; ++scan) {
        EXPECT_GE(times[scan] - times[scan - 1], 100'000'000)
            << "between passes " << scan - 1 << " and " << scan;
    }
}
