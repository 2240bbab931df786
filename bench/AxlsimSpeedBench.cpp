// SPDX-License-Identifier: MIT
// How fast axlsim plays driver scenarios on the virtual clock: ten minutes of one driver, and of
// four drivers on one bus, each fully configured, with an input change and an output event per
// driver every second, scanned every 100 ms. The counter x_real_time is simulated seconds per
// wall-clock second.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/ScenarioPlayer.h"
#include "hosting/DriverLibrary.h"

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds kSimulated = 600s;

bool isDigital(vplc::Module module) {
    return module == vplc::Module::DI8_DO8;
}

// Event ids of the driver at `position`: inputs from position * 1000 + 100, outputs from
// position * 1000 + 200, one per pin.
uint32_t idOf(int position, int first, int pin) {
    return static_cast<uint32_t>(position * 1000 + first + pin);
}

axlsim::Config::Driver driverFor(int position, vplc::Module module) {
    axlsim::Config::Driver driver;
    driver.name = "axl" + std::to_string(position);
    driver.serviceName = "IO" + std::to_string(position);
    driver.deviceType = std::string(vplc::orderName(module));
    driver.params["Consecutive Number"] = std::to_string(position);
    const bool digital = isDigital(module);
    const int pins = digital ? 8 : 2;
    const uint16_t size = digital ? 1 : 4;
    unsigned key = 1;
    for (int pin = 0; pin < pins; ++pin) {
        const std::string pinText = std::to_string(pin);
        const uint32_t input = idOf(position, 100, pin);
        const uint32_t output = idOf(position, 200, pin);
        driver.mappings[input] = size;
        driver.mappings[output] = size;
        driver.services[key++] = {
            input, "in" + pinText, digital ? "DigitalIn" : "AnalogIn", {{"PinNum", pinText}}};
        driver.services[key++] = {output,
                                  "out" + pinText,
                                  digital ? "DigitalOut" : "AnalogOut",
                                  {{"PinNum", pinText}, {"InitVal", "0"}}};
    }
    if (position > 1) {
        driver.path = "/drivers/" + std::to_string(position - 1);
    }
    return driver;
}

std::vector<uint8_t> payloadOf(bool digital, int second) {
    if (digital) {
        return {static_cast<uint8_t>(second % 2)};
    }
    const float value = static_cast<float>(second % 20) * 0.5f;
    std::vector<uint8_t> bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

axlsim::Config scenarioOf(const std::vector<vplc::Module>& bus) {
    axlsim::Config config;
    config.file = "virtual-time benchmark";
    config.bus = bus;
    config.severalDrivers = bus.size() > 1;
    for (std::size_t i = 0; i < bus.size(); ++i) {
        config.drivers.push_back(driverFor(static_cast<int>(i + 1), bus[i]));
    }
    const auto seconds = static_cast<int>(kSimulated.count());
    for (int second = 1; second < seconds; ++second) {
        const std::chrono::milliseconds at = std::chrono::seconds(second);
        for (std::size_t i = 0; i < bus.size(); ++i) {
            const int position = static_cast<int>(i + 1);
            const bool digital = isDigital(bus[i]);
            const int pin = digital ? second % 8 : second % 2;
            const uint16_t value = digital ? static_cast<uint16_t>((second / 8) % 2)
                                           : static_cast<uint16_t>((second % 10) * 3000);
            config.scenario.emplace_back().at = at;
            config.scenario.back().action = axlsim::Config::Input{position, pin, value};
        }
        for (std::size_t i = 0; i < bus.size(); ++i) {
            const int position = static_cast<int>(i + 1);
            const bool digital = isDigital(bus[i]);
            const int pin = digital ? second % 8 : second % 2;
            axlsim::Config::Event event;
            event.driver = static_cast<int>(i);
            event.id = idOf(position, 200, pin);
            event.payload = payloadOf(digital, second);
            event.size = static_cast<uint32_t>(event.payload->size());
            config.scenario.emplace_back().at = at + 50ms;
            config.scenario.back().action = std::move(event);
        }
    }
    config.end = kSimulated;
    return config;
}

void virtualTime(benchmark::State& state, std::vector<vplc::Module> bus) {
    const axlsim::Config config = scenarioOf(bus);
    const hosting::DriverLibrary library(AXLSIM_DRIVER_PATH);
    int publishes = 0;
    long runs = 0;
    std::chrono::duration<double> wall{0};
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const axlsim::RunResult result = axlsim::scenarioplayer::run(config, library, {});
        wall += std::chrono::steady_clock::now() - start;
        ++runs;
        if (!result.wentAsExpected) {
            state.SkipWithError("a driver stopped or threw");
            break;
        }
        publishes = 0;
        for (const auto& driver : result.drivers) {
            publishes += driver.publishes;
        }
    }
    state.counters["drivers"] = static_cast<double>(bus.size());
    state.counters["publishes"] = publishes;
    if (wall.count() > 0.0) {
        const std::chrono::duration<double> simulated = kSimulated * runs;
        state.counters["x_real_time"] = simulated / wall;
    }
}

BENCHMARK_CAPTURE(virtualTime, one_driver, {vplc::Module::DI8_DO8})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(virtualTime, four_drivers,
                  {vplc::Module::DI8_DO8, vplc::Module::AI2_AO2, vplc::Module::DI8_DO8,
                   vplc::Module::AI2_AO2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
