// SPDX-License-Identifier: MIT
#include "axlsim/check/LoopCheck.h"

#include <map>
#include <utility>

#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/configuration/LoopNames.h"
#include "axlsim/configuration/RouteFit.h"

namespace axlsim {

namespace {

using Receiver = EventCatalog::Receiver;

constexpr const char* kRefused = "axlsim run refuses the configuration";

std::string receiverText(Receiver receiver) {
    return receiver == Receiver::Analog ? "the float of an \"AnalogOut\" service"
                                        : "the byte of a \"DigitalOut\" service";
}

std::string subjectOf(const Route& route) {
    return "route " + std::to_string(route.from) + " -> " + std::to_string(route.to);
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

void checkInputs(const Config& config, std::vector<loopcheck::Finding>& findings) {
    // The first model on each input: each later one is reported against it.
    std::map<std::string, const PlantModel*> drivenBy;
    for (const PlantModel& model : config.plant) {
        const std::string pin = model.to().name();
        const auto [first, added] = drivenBy.try_emplace(pin, &model);
        if (added) {
            continue;
        }
        findings.push_back(
            {model.path, "plant model on " + inQuotes(pin), true,
             inQuotes(pin) + " is driven by " + first->second->path + " as well", kRefused,
             "drive each input by one model; a scenario step may still set it now and then"});
    }
}

// Two routes to one output: the output takes whichever delivered last. Only routes that deliver
// count; the others are reported already.
void checkOutputs(const EventCatalog& catalog, const std::vector<Route>& host,
                  std::vector<loopcheck::Finding>& findings) {
    std::map<std::pair<int, uint32_t>, const Route*> drivenBy;
    for (const Route& route : host) {
        const Config::Service* source = catalog.inputService(route.fromDriver, route.from);
        const Receiver receiver = catalog.receiverOf(route.toDriver, route.to);
        if (source == nullptr || (receiver != Receiver::Digital && receiver != Receiver::Analog) ||
            !routeMapFits(route.map, source->type == "DigitalIn", receiver)) {
            continue;
        }
        const auto [first, added] = drivenBy.try_emplace({route.toDriver, route.to}, &route);
        if (added) {
            continue;
        }
        const std::string output =
            "event " + std::to_string(route.to) + " of driver " + std::to_string(route.toDriver);
        findings.push_back(
            {route.path, subjectOf(route), false,
             output + " (" + receiverText(receiver) + ") is driven by " + first->second->path +
                 " as well",
             "the output takes whichever of the two routes delivered last, so it follows "
             "neither",
             "drive each output by one route; combine the conditions in the plant or the "
             "scenario instead"});
    }
}

void checkRoute(const EventCatalog& catalog, const Route& route,
                std::vector<loopcheck::Finding>& findings) {
    const std::string subject = subjectOf(route);
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
    if (receiver == Receiver::Restart &&
        (route.map == Route::Map::Above || route.map == Route::Map::Below)) {
        const std::string from = "event " + std::to_string(route.from);
        findings.push_back(
            {route.path, subject, false,
             inQuotes(mapName(route.map)) + " routes to the restart service (event " +
                 std::to_string(route.to) + ") of " + toDriver +
                 ", which gets its byte 0 whatever the map gives",
             route.onChange ? toDriver + " restarts once, at the first publication of " + from +
                                  ", and never again: the byte sent never changes"
                            : toDriver + " restarts at every publication of " + from +
                                  " (at start and at every change), whatever the threshold",
             "a route cannot restart on a condition: switch a \"DigitalOut\" id with the "
             "threshold instead, or send the restart as a scenario event"});
        return;
    }
    const bool digital = source->type == "DigitalIn";
    if (routeMapFits(route.map, digital, receiver)) {
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

std::vector<loopcheck::Finding> loopcheck::check(const Config& config) {
    std::vector<Finding> findings;
    checkInputs(config, findings);
    const EventCatalog catalog(config.drivers);
    for (const Route& route : config.host) {
        checkRoute(catalog, route, findings);
    }
    checkOutputs(catalog, config.host, findings);
    return findings;
}

void loopcheck::requireRunnable(const Config& config) {
    for (const Finding& finding : check(config)) {
        if (finding.refusesRun) {
            throw ConfigError(config.file, finding.path, finding.problem + "; " + finding.fix);
        }
    }
}

}  // namespace axlsim
