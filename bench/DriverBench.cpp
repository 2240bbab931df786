// SPDX-License-Identifier: MIT
// The driver's hot paths on the virtual controller, each beside its floor: the same platform
// calls made by a bare loop with no driver logic. The report ends with the driver / floor ratios.
//
//   scan/...   one steady scan of a fully configured module, on the scanning thread itself;
//              an iteration is a batch of scans run back to back (see ScanBatchClock)
//   event/...  one output event through onReceiveEvent, on the calling thread
//   from_ib_il, to_ib_il   one conversion; an iteration converts a table of values

#include <benchmark/benchmark.h>

#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "RatioReporter.h"
#include "modules/IbIlConversion.h"
#include "rig/EventRig.h"
#include "rig/ScanRig.h"
#include "rig/Workload.h"

namespace {

using axlbench::EventKind;
using axlbench::EventRig;
using axlbench::ModuleKind;
using axlbench::RatioReporter;
using axlbench::ScanRig;
using axlbench::Side;

constexpr long kScansPerBatch = 1000;
constexpr int kConversionsPerBatch = 1024;
constexpr double kRatioTarget = 1.2;

void setBatch(benchmark::State& state, double operations, const char* perOperation) {
    state.counters[RatioReporter::kBatchCounter] = operations;
    state.counters[perOperation] = benchmark::Counter(
        operations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// The rig of a benchmark; null, with the benchmark skipped and the reason shown, if setting it up
// fails.
template <class Rig, class... Arguments>
std::unique_ptr<Rig> rigFor(benchmark::State& state, Arguments... arguments) {
    try {
        return std::make_unique<Rig>(arguments...);
    } catch (const std::exception& error) {
        state.SkipWithError(error.what());
        return nullptr;
    }
}

void scans(benchmark::State& state, ModuleKind module, Side side) {
    const auto rig = rigFor<ScanRig>(state, module, side);
    for (auto _ : state) {
        const std::chrono::duration<double> elapsed = rig->run(kScansPerBatch);
        state.SetIterationTime(elapsed.count());
    }
    setBatch(state, kScansPerBatch, "per_scan");
}

void events(benchmark::State& state, EventKind kind, Side side) {
    const auto rig = rigFor<EventRig>(state, kind, side);
    for (auto _ : state) {
        rig->deliver();
    }
}

void fromIbIl(benchmark::State& state) {
    std::vector<unsigned short> words(kConversionsPerBatch);
    for (int i = 0; i < kConversionsPerBatch; ++i) {
        words[static_cast<std::size_t>(i)] = static_cast<unsigned short>(i * 64 + 7);
    }
    for (auto _ : state) {
        for (const unsigned short word : words) {
            benchmark::DoNotOptimize(from_ib_il(word));
        }
    }
    setBatch(state, kConversionsPerBatch, "per_call");
}

void toIbIl(benchmark::State& state) {
    // From -1.0 to beyond 21.845, so that the negative, the wrapping and the ordinary values are
    // all among them.
    std::vector<float> values(kConversionsPerBatch);
    for (int i = 0; i < kConversionsPerBatch; ++i) {
        values[static_cast<std::size_t>(i)] = -1.0f + static_cast<float>(i) * 0.025f;
    }
    for (auto _ : state) {
        for (const float value : values) {
            benchmark::DoNotOptimize(to_ib_il(value));
        }
    }
    setBatch(state, kConversionsPerBatch, "per_call");
}

// The benchmark `run` of `kind` once on the driver's side and once on the floor's, as
// "<name>/driver" and "<name>/floor". Scans time themselves on the scanning thread; events are
// timed on the wall clock of the delivering thread.
template <class Kind>
void registerBothSides(const std::string& name, void (*run)(benchmark::State&, Kind, Side),
                       Kind kind) {
    constexpr bool scanning = std::is_same_v<Kind, ModuleKind>;
    for (const Side side : {Side::Driver, Side::Floor}) {
        auto* registered = benchmark::RegisterBenchmark(
            (name + "/" + std::string(nameOf(side))).c_str(), run, kind, side);
        if constexpr (scanning) {
            registered->UseManualTime()->Unit(benchmark::kMillisecond);
        } else {
            registered->UseRealTime()->Unit(benchmark::kNanosecond);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerBothSides("scan/digital_8_inputs", scans, ModuleKind::Digital);
    registerBothSides("scan/analog_2_inputs", scans, ModuleKind::Analog);
    registerBothSides("event/digital_pin", events, EventKind::Digital);
    registerBothSides("event/analog_channel", events, EventKind::Analog);
    registerBothSides("event/two_pins_one_id", events, EventKind::TwoPins);
    benchmark::RegisterBenchmark("from_ib_il", fromIbIl)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("to_ib_il", toIbIl)->Unit(benchmark::kMicrosecond);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter(kRatioTarget);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
