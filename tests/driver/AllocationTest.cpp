// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ExposedDriver.h"
#include "StepClock.h"
#include "hosting/DriverConfig.h"
#include "hosting/HostCalls.h"
#include "orbel/HostObserver.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"

using hosting::DriverPtr;
using testsupport::StepClock;
namespace host = hosting::host;
using hosting::DriverConfig;
using testsupport::ExposedDriver;

namespace {

// Allocations are counted on a thread that has switched counting on, and on driver threads while
// a measurement runs.
std::atomic<long> allocations{0};
std::atomic<bool> measuringDriverThreads{false};
// When set, the counted allocation with this number fails (counting from 1).
std::atomic<long> failingAllocation{0};
thread_local bool countingHere = false;
thread_local bool onDriverThread = false;
// The sizes of the first array allocations counted (the driver's input payload buffers are its
// only ones).
constexpr int kArraySizesKept = 16;
std::atomic<std::size_t> arraySizes[kArraySizesKept];
std::atomic<int> arrayAllocations{0};

class CountingScope {
public:
    CountingScope() : previous_(countingHere) { countingHere = true; }
    ~CountingScope() { countingHere = previous_; }

private:
    bool previous_;
};

// Out of line, so that the compiler does not pair an inlined malloc with the free below.
[[gnu::noinline]] void* allocate(std::size_t size) {
    if (countingHere || (onDriverThread && measuringDriverThreads.load())) {
        if (allocations.fetch_add(1) + 1 == failingAllocation.load()) {
            throw std::bad_alloc();
        }
    }
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void release(void* memory) noexcept {
    std::free(memory);
}

// Marks driver threads as they start, and counts publications without keeping anything.
class DriverThreadMarker final : public orbel::HostObserver {
public:
    DriverThreadMarker() { orbel::addObserver(*this); }
    ~DriverThreadMarker() override { orbel::removeObserver(*this); }

    int publications() const { return publications_.load(); }
    int stops() const { return stops_.load(); }

    void logged(const CSI_base*, int, std::string_view, std::string_view) override {}
    void published(const CSI_base*, uint32_t, uint32_t, std::span<const uint8_t>) override {
        publications_.fetch_add(1);
    }
    void stopped(const CSI_base*, const stServiceParams_t*, std::string_view) override {
        stops_.fetch_add(1);
    }
    void threadStarted(const CSI_base*) override { onDriverThread = true; }
    void threadEnded(const CSI_base*, std::string_view) override {}

private:
    std::atomic<int> publications_{0};
    std::atomic<int> stops_{0};
};

// A module kept in memory alone: every pin kind on pins 0 to 7, no platform calls.
class MemoryModule final : public INumberedPinModule {
public:
    bool isServiceTypeSupported(ServiceType type) override { return type != Unsupported; }
    bool isServiceAlreadyRegistered(int pin, ServiceType type) override {
        return taken_[type][pin];
    }
    bool registerService(int pin, ServiceType type) override {
        if (taken_[type][pin]) {
            return false;
        }
        taken_[type][pin] = true;
        return true;
    }
    bool isServiceAvailable(int pin, ServiceType type) override {
        return isServiceTypeSupported(type) && pin >= 0 && pin < 8;
    }
    std::string getValidRange(ServiceType) override { return "0 - 7"; }

private:
    bool taken_[5][8] = {};
};

// The sizes of the array allocations made by `initialize` on this thread.
std::vector<std::size_t> arraySizesOfInitialisation(CSI_base& driver) {
    std::vector<std::size_t> sizes;
    sizes.reserve(kArraySizesKept);
    arrayAllocations = 0;
    {
        CountingScope counting;
        host::initialize(driver);
    }
    for (int index = 0; index < arrayAllocations.load() && index < kArraySizesKept; ++index) {
        sizes.push_back(arraySizes[index].load());
    }
    return sizes;
}

// The allocations of the driver threads over 20 scan passes, each after `change(pass)`.
template <class Change>
long allocationsOfTwentyPasses(StepClock& clock, Change change) {
    allocations = 0;
    measuringDriverThreads = true;
    for (int pass = 0; pass < 20; ++pass) {
        change(pass);
        clock.step();
    }
    measuringDriverThreads = false;
    return allocations.load();
}

// The allocations of 20 deliveries of an event (`deliver` delivers it) on this thread, each after
// `change(delivery)`.
template <class Deliver, class Change>
long allocationsOfTwentyDeliveries(Deliver deliver, Change change) {
    allocations = 0;
    {
        CountingScope counting;
        for (int delivery = 0; delivery < 20; ++delivery) {
            change(delivery);
            deliver();
        }
    }
    return allocations.load();
}

// For deliveries that change nothing in between.
void noChange(int) {}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    if (countingHere) {
        const int index = arrayAllocations.fetch_add(1);
        if (index < kArraySizesKept) {
            arraySizes[index] = size;
        }
    }
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete[](void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

TEST(Allocation, TheCounterSeesAnAllocationOnACountingThread) {
    allocations = 0;
    {
        CountingScope counting;
        // Called directly: a new-expression whose result is unused may be left out.
        ::operator delete(::operator new(16));
    }
    EXPECT_EQ(allocations.load(), 1);
}

// A driver scanning two inputs of one module: the first is changed once before the measured
// passes, the second at every measured pass, so that each of them publishes.
struct SteadyScan {
    const char* name;
    vplc::Module module;
    DriverConfig (*config)();
    void (*changeFirstInput)(vplc::Station&);
    void (*changeSecondInput)(vplc::Station&, int pass);

    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const SteadyScan& row) {
        return out << row.name;
    }
};

class AllocationOfAScan : public testing::TestWithParam<SteadyScan> {};

TEST_P(AllocationOfAScan, IsNoneAlsoWhenItPublishes) {
    const SteadyScan& scan = GetParam();
    auto station = vplc::Station::of({scan.module});
    StepClock clock;
    DriverThreadMarker marker;
    auto driver = host::create(scan.config());
    host::initialize(*driver);
    // Through the two initial pauses and two passes, one of them publishing, so that everything
    // the platform sets up on first use is in place.
    clock.step(2);
    scan.changeFirstInput(station);
    clock.step(2);
    const int publicationsBefore = marker.publications();

    EXPECT_EQ(
        allocationsOfTwentyPasses(clock, [&](int pass) { scan.changeSecondInput(station, pass); }),
        0);
    EXPECT_EQ(marker.publications() - publicationsBefore, 20);
}

INSTANTIATE_TEST_SUITE_P(
    Allocation, AllocationOfAScan,
    testing::Values(
        SteadyScan{
            "ASteadyDigitalScanAllocatesNothingAlsoWhenItPublishes", vplc::Module::DI8_DO8,
            [] { return DriverConfig::digital().digitalIn(1, "0").digitalIn(2, "4"); },
            [](vplc::Station& station) { station.setDigitalInput(1, 0, true); },
            [](vplc::Station& station, int pass) { station.setDigitalInput(1, 4, pass % 2 == 0); }},
        SteadyScan{"ASteadyAnalogScanAllocatesNothingAlsoWhenItPublishes", vplc::Module::AI2_AO2,
                   [] { return DriverConfig::analog().analogIn(1, "0").analogIn(2, "1"); },
                   [](vplc::Station& station) { station.setAnalogInput(1, 0, 3000); },
                   [](vplc::Station& station, int pass) {
                       station.setAnalogInput(1, 1, pass % 2 == 0 ? 30000 : 0);
                   }}),
    [](const testing::TestParamInfo<SteadyScan>& info) { return std::string(info.param.name); });

TEST(Allocation, DigitalOutputEventsAllocateNothing) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    StepClock clock;
    auto driver =
        host::create(DriverConfig::digital()
                         .digitalOut(20, "3", "0")
                         .digitalOut(21, "4", "0")
                         .service(22, "DigitalOut", 20, {{"PinNum", "5"}, {"InitVal", "0"}}));
    host::initialize(*driver);
    clock.waitUntilPaused();
    std::array<uint8_t, 1> payload{1};
    const auto deliver = [&] { host::deliver(*driver, 20, payload, 1); };
    deliver();

    EXPECT_EQ(allocationsOfTwentyDeliveries(
                  deliver, [&](int delivery) { payload[0] = static_cast<uint8_t>(delivery % 2); }),
              0);
    EXPECT_EQ(station.digitalOutputsOnBus(1), 0x28);
}

TEST(Allocation, AnalogOutputEventsAllocateNothing) {
    auto station = vplc::Station::of({vplc::Module::AI2_AO2});
    StepClock clock;
    auto driver = host::create(DriverConfig::analog().analogOut(20, "1", "0"));
    host::initialize(*driver);
    clock.waitUntilPaused();
    std::array<uint8_t, sizeof(float)> payload{};
    const auto setValue = [&](float value) { std::memcpy(payload.data(), &value, sizeof value); };
    const auto deliver = [&] { host::deliver(*driver, 20, payload, sizeof(float)); };
    setValue(1.0f);
    deliver();

    EXPECT_EQ(allocationsOfTwentyDeliveries(
                  deliver, [&](int delivery) { setValue(static_cast<float>(delivery)); }),
              0);
    EXPECT_EQ(station.analogOutputOnBus(1, 1), 57000);
}

// The error paths of an event report to the host without allocating: an event of an id that no
// service has, walked past the restart services too without restarting, and an event without
// data. The observer keeps the host's side of the report free of allocations as well.
TEST(Allocation, AnUnsubscribedEventAllocatesNothingOnItsWayPastTheRestartServices) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    StepClock clock;
    DriverThreadMarker marker;
    auto driver =
        host::create(DriverConfig::digital().digitalOut(20, "3", "0").restart(30).restart(31));
    host::initialize(*driver);
    clock.waitUntilPaused();
    std::array<uint8_t, 1> payload{1};
    const auto deliver = [&] { host::deliver(*driver, 99, payload, 1); };
    deliver();
    const int stopsBefore = marker.stops();
    const int busCopiesBefore = station.calls("ArpPlcAxio_WriteFromGdsToAxio");
    const int restartsBefore = vplc::Runtime::restarts();

    EXPECT_EQ(allocationsOfTwentyDeliveries(deliver, noChange), 0);
    EXPECT_EQ(marker.stops() - stopsBefore, 20);
    EXPECT_EQ(station.calls("ArpPlcAxio_WriteFromGdsToAxio") - busCopiesBefore, 20);
    EXPECT_EQ(vplc::Runtime::restarts() - restartsBefore, 0);
}

TEST(Allocation, AnEventWithoutDataAllocatesNothing) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    StepClock clock;
    DriverThreadMarker marker;
    auto driver = host::create(DriverConfig::digital().digitalOut(20, "3", "0"));
    host::initialize(*driver);
    clock.waitUntilPaused();
    const auto deliver = [&] { host::deliverNull(*driver, 20, 1); };
    deliver();
    const int stopsBefore = marker.stops();

    EXPECT_EQ(allocationsOfTwentyDeliveries(deliver, noChange), 0);
    EXPECT_EQ(marker.stops() - stopsBefore, 20);
}

TEST(Allocation, WhereverTheFactoryRunsOutOfMemoryItThrowsBadAllocAndLeavesNothingBehind) {
    const auto config = DriverConfig::digital().digitalIn(1, "0").restart(2);
    int failures = 0;
    for (long failing = 1;; ++failing) {
        allocations = 0;
        failingAllocation = failing;
        bool created = false;
        try {
            CountingScope counting;
            auto driver = host::create(config);
            created = true;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        failingAllocation = 0;
        if (created) {
            break;
        }
    }
    // Copying the records alone takes several allocations; each of them was made to fail once.
    EXPECT_GT(failures, 5);
}

TEST(Allocation, WhereverRegistrationRunsOutOfMemoryItThrowsBadAlloc) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    // Attached, and the platform's input copy used once, beforehand: the failing allocation is
    // to meet the driver's own work, not the runtime's start or the virtual controller's.
    host::initialize(*host::create(DriverConfig("NONE").restart(1)));
    // Refused at the last service, so that no thread starts.
    const auto config = DriverConfig("MEMORY")
                            .digitalIn(1, "0")
                            .analogIn(2, "1")
                            .digitalOut(3, "2", "1")
                            .analogOut(4, "3", "1")
                            .restart(5)
                            .service(6, "Counter", 6);
    int failures = 0;
    for (long failing = 1;; ++failing) {
        DriverPtr<ExposedDriver> driver(new ExposedDriver(config));
        driver->setModule(new MemoryModule());
        allocations = 0;
        failingAllocation = failing;
        bool initialised = false;
        try {
            CountingScope counting;
            host::initialize(*driver);
            initialised = true;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        failingAllocation = 0;
        if (initialised) {
            EXPECT_EQ(driver->restartEventIds().size(), 1u);
            break;
        }
    }
    EXPECT_GT(failures, 5);
}

TEST(Allocation, AnInputWhoseEventHasNoSizeStillGetsABufferThatHoldsItsValue) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    StepClock clock;
    auto digital = DriverConfig::digital().digitalIn(1, "0");
    digital.mappings.clear();
    auto analog = DriverConfig::analog(2).analogIn(2, "0");
    analog.mappings.clear();
    auto digitalDriver = host::create(digital);
    auto analogDriver = host::create(analog);

    EXPECT_EQ(arraySizesOfInitialisation(*digitalDriver), std::vector<std::size_t>{1});
    EXPECT_EQ(arraySizesOfInitialisation(*analogDriver), std::vector<std::size_t>{4});
}

TEST(Allocation, AnInputBufferHasTheSizeOfItsEventWhenThatHoldsTheValue) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    StepClock clock;
    auto digitalDriver = host::create(DriverConfig::digital().digitalIn(1, "0", 3));
    auto analogDriver = host::create(DriverConfig::analog(2).analogIn(2, "0", 8));

    EXPECT_EQ(arraySizesOfInitialisation(*digitalDriver), std::vector<std::size_t>{3});
    EXPECT_EQ(arraySizesOfInitialisation(*analogDriver), std::vector<std::size_t>{8});
}
