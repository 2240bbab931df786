// SPDX-License-Identifier: MIT
// Ten minutes of a driver on the virtual clock: an AXL F DI8/1 DO8/1 with eight inputs and eight
// outputs, an input changing and an output event every second, scanned every 100 ms.

#include <benchmark/benchmark.h>

#include <string>

#include "axlsim/configuration/Config.h"
#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/run/ScenarioPlayer.h"
#include "hosting/DriverLibrary.h"

namespace {

std::string tenMinutes() {
    std::string mappings;
    std::string services;
    for (int pin = 0; pin < 8; ++pin) {
        const std::string p = std::to_string(pin);
        mappings += (pin == 0 ? "" : ", ") + std::string("\"10") + p + "\": { \"size\": 1 }, \"20" +
                    p + "\": { \"size\": 1 }";
        services += (pin == 0 ? "" : ", ") + std::string("\"") + std::to_string(1 + pin) +
                    "\": { \"eventId\": 10" + p + ", \"type\": \"DigitalIn\", \"params\": { " +
                    "\"PinNum\": \"" + p + "\" } }, \"" + std::to_string(11 + pin) +
                    "\": { \"eventId\": 20" + p + ", \"type\": \"DigitalOut\", \"params\": { " +
                    "\"PinNum\": \"" + p + "\", \"InitVal\": \"0\" } }";
    }
    std::string scenario;
    for (int second = 1; second < 600; ++second) {
        const std::string at = std::to_string(second * 1000);
        const std::string later = std::to_string(second * 1000 + 50);
        const std::string pin = std::to_string(second % 8);
        const std::string on = std::to_string((second / 8) % 2);
        scenario += "{ \"at_ms\": " + at + ", \"input\": { \"module\": 1, \"pin\": " + pin +
                    ", \"value\": " + on + " } }, { \"at_ms\": " + later +
                    ", \"event\": { \"id\": 20" + pin + ", \"value\": " + on + " } }, ";
    }
    return "{ \"driver\": { \"name\": \"axl1\", \"serviceName\": \"IO1\", \"deviceType\": "
           "\"AXL_F_DI8_1_DO8_1\", \"params\": { \"Consecutive Number\": \"1\" } }, "
           "\"mappings\": { " +
           mappings + " }, \"services\": { " + services + " }, \"scenario\": [ " + scenario +
           "{ \"at_ms\": 600000, \"end\": true } ] }";
}

void TenMinutesOfOneDriverOnTheVirtualClock(benchmark::State& state) {
    const axlsim::Config config = axlsim::configreader::readText(tenMinutes(), "ten minutes");
    const hosting::DriverLibrary library(AXLSIM_DRIVER_PATH);
    std::size_t happenings = 0;
    for (auto _ : state) {
        const axlsim::RunResult result = axlsim::scenarioplayer::run(config, library, {});
        happenings = result.timeline.size();
        benchmark::DoNotOptimize(happenings);
    }
    state.counters["happenings"] = static_cast<double>(happenings);
}

BENCHMARK(TenMinutesOfOneDriverOnTheVirtualClock)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
