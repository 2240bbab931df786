// SPDX-License-Identifier: MIT
#include "axlsim/check/LoopCheck.h"

#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/configuration/LoopNames.h"
#include "axlsim/render/ValueText.h"
#include "axlsim/run/HostRoutes.h"

namespace axlsim {

namespace {

using Receiver = EventCatalog::Receiver;

constexpr const char* kRefused = "axlsim run refuses the configuration";

std::string receiverText(Receiver receiver) {
    return receiver == Receiver::Analog ? "the float of an \"AnalogOut\" service"
                                        : "the byte of a \"DigitalOut\" service";
}

std::string fixFor(Route::Map map) {
    switch (map) {
        case Route::Map::Copy:
            return "use \"above\" or \"below\" with a \"threshold\" to switch a digital output "
                   "by an analog value";
        case Route::Map::Invert:
            return "\"invert\" turns a digital input into a digital output; route two digital "
                   "ids, or use \"below\" for an analog source";
        case Route::Map::Above:
        case Route::Map::Below:
            return "\"above\" and \"below\" make a digital value: route to a \"DigitalOut\" id, "
                   "or use \"scale\" for an analog output";
        case Route::Map::Scale:
            break;
    }
    return "\"scale\" makes an analog value: route to an \"AnalogOut\" id, or use \"above\" or "
           "\"below\" for a digital output";
}

void checkInputs(const Config& config, std::vector<LoopCheck::Finding>& findings) {
    for (std::size_t j = 0; j < config.plant.size(); ++j) {
        for (std::size_t i = 0; i < j; ++i) {
            if (config.plant[i].to() != config.plant[j].to()) {
                continue;
            }
            const std::string pin = config.plant[j].to().name();
            findings.push_back(
                {config.plant[j].path, "plant model on " + inQuotes(pin), true,
                 inQuotes(pin) + " is driven by " + config.plant[i].path + " as well", kRefused,
                 "drive each input by one model; a scenario step may still set it now and then"});
            break;
        }
    }
}

void checkRoute(const EventCatalog& catalog, const Route& route,
                std::vector<LoopCheck::Finding>& findings) {
    const std::string subject =
        "route " + std::to_string(route.from) + " -> " + std::to_string(route.to);
    const std::string fromDriver = "driver " + std::to_string(route.fromDriver);
    const std::string toDriver = "driver " + std::to_string(route.toDriver);
    const Config::Service* source = catalog.inputService(route.fromDriver, route.from);
    const Receiver receiver = catalog.receiverOf(route.toDriver, route.to);
    if (source == nullptr) {
        findings.push_back(
            {route.path, subject, false,
             "no input service of " + fromDriver + " publishes event " + std::to_string(route.from),
             "the route never fires",
             "route from the event id of a \"DigitalIn\" or \"AnalogIn\" service "
             "of " +
                 fromDriver});
    }
    if (receiver == Receiver::None) {
        findings.push_back(
            {route.path, subject, false,
             "no output or restart service of " + toDriver + " has event id " +
                 std::to_string(route.to),
             toDriver + " stops with \"Unsubscribed event received\" (driver-wide) at the "
                        "route's first delivery",
             "route to the event id of an output or restart service of " + toDriver});
    }
    if (source == nullptr || receiver == Receiver::None) {
        return;
    }
    const bool digital = source->type == "DigitalIn";
    if (HostRoutes::fits(route.map, digital, receiver)) {
        return;
    }
    findings.push_back({route.path, subject, true,
                        inQuotes(mapName(route.map)) + " cannot turn the " +
                            (digital ? "byte of a \"DigitalIn\"" : "float of an \"AnalogIn\"") +
                            " service (event " + std::to_string(route.from) + ") into " +
                            receiverText(receiver) + " (event " + std::to_string(route.to) + ")",
                        kRefused, fixFor(route.map)});
}

}  // namespace

std::vector<LoopCheck::Finding> LoopCheck::check(const Config& config) {
    std::vector<Finding> findings;
    checkInputs(config, findings);
    const EventCatalog catalog(config.drivers);
    for (const Route& route : config.host) {
        checkRoute(catalog, route, findings);
    }
    return findings;
}

void LoopCheck::requireRunnable(const Config& config) {
    for (const Finding& finding : check(config)) {
        if (finding.refusesRun) {
            throw ConfigError(config.file, finding.path, finding.problem + "; " + finding.fix);
        }
    }
}

}  // namespace axlsim
