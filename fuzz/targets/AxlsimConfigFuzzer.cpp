// SPDX-License-Identifier: MIT
#include "AxlsimConfigFuzzer.h"

#include <algorithm>
#include <exception>
#include <variant>

#include "Findings.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/check/LoopCheck.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/ConfigReader.h"

namespace fuzz {

namespace {

void checkConfig(Findings& findings, const axlsim::Config& config) {
    findings.expect(std::is_sorted(config.scenario.begin(), config.scenario.end(),
                                   [](const auto& a, const auto& b) { return a.at < b.at; }),
                    "the scenario is not in time order");
    findings.expect(
        config.bus.size() <= static_cast<std::size_t>(axlsim::configreader::kMaxBusModules),
        "a bus of " + std::to_string(config.bus.size()) + " modules");
    for (const axlsim::Config::Step& step : config.scenario) {
        if (const auto* event = std::get_if<axlsim::Config::Event>(&step.action)) {
            findings.expect(
                event->driver >= 0 && event->driver < static_cast<int>(config.drivers.size()),
                "an event at " + step.path + " for driver " + std::to_string(event->driver));
        }
        if (const auto* input = std::get_if<axlsim::Config::Input>(&step.action)) {
            findings.expect(
                input->position >= 1 && input->position <= static_cast<int>(config.bus.size()),
                "an input at " + step.path + " on position " + std::to_string(input->position));
        }
    }
    for (const axlsim::PlantModel& model : config.plant) {
        const axlsim::Pin& to = model.to();
        findings.expect(
            to.position >= 1 && to.position <= static_cast<int>(config.bus.size()),
            "a plant model at " + model.path + " on position " + std::to_string(to.position));
    }
    for (const axlsim::Route& route : config.host) {
        const int drivers = static_cast<int>(config.drivers.size());
        findings.expect(route.fromDriver >= 0 && route.fromDriver < drivers &&
                            route.toDriver >= 0 && route.toDriver < drivers,
                        "a route at " + route.path + " between drivers off the list");
    }
    try {
        axlsim::loopcheck::check(config);
        const auto found = axlsim::configcheck::check(config);
        for (int driver = 0; driver < static_cast<int>(config.drivers.size()); ++driver) {
            axlsim::configcheck::firstFailure(found, driver);
        }
    } catch (const std::exception& e) {
        findings.add(std::string("the check threw: ") + e.what());
    }
}

}  // namespace

std::string AxlsimConfigFuzzer::run(std::span<const uint8_t> input) {
    Findings findings;
    const std::string text(reinterpret_cast<const char*>(input.data()), input.size());
    try {
        checkConfig(findings, axlsim::configreader::readText(text, "fuzz.json"));
    } catch (const axlsim::ConfigError& e) {
        findings.expect(!e.reason().empty(), "a ConfigError without a reason");
    } catch (const std::exception& e) {
        findings.add(std::string("the reader threw something else than a ConfigError: ") +
                     e.what());
    } catch (...) {
        findings.add("the reader threw something that is not a std::exception");
    }
    return findings.text();
}

}  // namespace fuzz
