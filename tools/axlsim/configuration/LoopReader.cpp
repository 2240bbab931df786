// SPDX-License-Identifier: MIT
#include "axlsim/configuration/LoopReader.h"

#include <array>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/LoopNames.h"

namespace axlsim {

namespace {

using Kind = Pin::Kind;

constexpr std::array<std::string_view, 4> kWireKeys{"from", "to", "delay_ms", "invert"};
constexpr std::array<std::string_view, 6> kLinkKeys{"from",   "to",     "gain",
                                                    "offset", "lag_ms", "delay_ms"};
constexpr std::array<std::string_view, 9> kSignalKeys{
    "to", "shape", "low", "high", "period_ms", "duty", "from_ms", "until_ms", "repeat"};
constexpr std::array<std::string_view, 11> kRouteKeys{
    "from",       "to",   "from_driver", "to_driver", "map",      "threshold",
    "hysteresis", "gain", "offset",      "delay_ms",  "on_change"};
constexpr std::array<std::string_view, 3> kModelKeys{"wire", "link", "signal"};
constexpr std::array<std::string_view, 1> kHostEntryKeys{"route"};

constexpr int kDigitalPins = 8;
constexpr int kAnalogChannels = 2;

std::string pinsOf(vplc::Module module) {
    return module == vplc::Module::DI8_DO8 ? "DI0 to DI7 and DO0 to DO7" : "AI0, AI1, AO0 and AO1";
}

bool hasPin(vplc::Module module, const Pin& pin) {
    if (module == vplc::Module::DI8_DO8) {
        return pin.digital() && pin.index < kDigitalPins;
    }
    return !pin.digital() && pin.index < kAnalogChannels;
}

std::string kindText(Kind kind) {
    switch (kind) {
        case Kind::DigitalIn:
            return "a digital input (DI)";
        case Kind::DigitalOut:
            return "a digital output (DO)";
        case Kind::AnalogIn:
            return "an analog input (AI)";
        case Kind::AnalogOut:
            break;
    }
    return "an analog output (AO)";
}

// A pin of the bus, of one of the kinds its role allows.
Pin pinOf(const Document& doc, const Json& node, const std::string& path,
          const std::vector<vplc::Module>& bus, std::initializer_list<Kind> kinds) {
    const std::string name = doc.text(node, path);
    const auto pin = Pin::parse(name);
    if (!pin) {
        doc.fail(path, inQuotes(name) +
                           " is not a pin name; write the bus position, the kind (DI, DO, AI or "
                           "AO) and the number, as in \"1.DI0\" or \"2.AO1\"");
    }
    if (pin->position < 1 || static_cast<std::size_t>(pin->position) > bus.size()) {
        doc.fail(path, inQuotes(name) + " names position " + std::to_string(pin->position) +
                           ", but the bus has modules at positions 1 to " +
                           std::to_string(bus.size()));
    }
    const vplc::Module module = bus[static_cast<std::size_t>(pin->position - 1)];
    if (!hasPin(module, *pin)) {
        doc.fail(path, inQuotes(name) + " is no pin of the " +
                           std::string(vplc::orderName(module)) + " at position " +
                           std::to_string(pin->position) + " (it has " + pinsOf(module) + ")");
    }
    bool allowed = false;
    std::string wanted;
    for (Kind kind : kinds) {
        allowed = allowed || kind == pin->kind;
        wanted += (wanted.empty() ? "" : " or ") + kindText(kind);
    }
    if (!allowed) {
        doc.fail(path, inQuotes(name) + " is " + kindText(pin->kind) + "; this takes " + wanted);
    }
    return *pin;
}

const Json& required(const Document& doc, const Json& node, const std::string& path,
                     const char* key, const std::string& what) {
    if (!node.contains(key)) {
        doc.fail(path, what + " needs its " + inQuotes(key));
    }
    return node.at(key);
}

double anyNumber(const Document& doc, const Json& node, const std::string& path) {
    constexpr double kLargest = 1e9;
    return doc.number(node, path, -kLargest, kLargest);
}

// The pin that the required member `key` names, of one of `kinds`.
Pin requiredPin(const Document& doc, const Json& node, const std::string& at, const char* key,
                const std::string& what, const std::vector<vplc::Module>& bus,
                std::initializer_list<Kind> kinds) {
    return pinOf(doc, required(doc, node, at, key, what), member(at, key), bus, kinds);
}

// Reads the member `key` of `node` into `field` when the member is there: a flag, any finite
// number or a time in milliseconds, by the field's type.
template <class Field>
void readIfThere(const Document& doc, const Json& node, const std::string& at, const char* key,
                 Field& field) {
    if (!node.contains(key)) {
        return;
    }
    const Json& value = node.at(key);
    const std::string path = member(at, key);
    if constexpr (std::is_same_v<Field, bool>) {
        field = doc.flag(value, path);
    } else if constexpr (std::is_same_v<Field, double>) {
        field = anyNumber(doc, value, path);
    } else {
        field = doc.milliseconds(value, path);
    }
}

Wire readWire(const Document& doc, const Json& node, const std::string& at,
              const std::vector<vplc::Module>& bus) {
    doc.object(node, at, kWireKeys);
    Wire wire;
    wire.from = requiredPin(doc, node, at, "from", "a wire", bus, {Kind::DigitalOut});
    wire.to = requiredPin(doc, node, at, "to", "a wire", bus, {Kind::DigitalIn});
    readIfThere(doc, node, at, "delay_ms", wire.delay);
    readIfThere(doc, node, at, "invert", wire.invert);
    return wire;
}

Link readLink(const Document& doc, const Json& node, const std::string& at,
              const std::vector<vplc::Module>& bus) {
    doc.object(node, at, kLinkKeys);
    Link link;
    link.from =
        requiredPin(doc, node, at, "from", "a link", bus, {Kind::AnalogOut, Kind::DigitalOut});
    link.to = requiredPin(doc, node, at, "to", "a link", bus, {Kind::AnalogIn});
    readIfThere(doc, node, at, "gain", link.gain);
    readIfThere(doc, node, at, "offset", link.offset);
    readIfThere(doc, node, at, "lag_ms", link.lag);
    readIfThere(doc, node, at, "delay_ms", link.delay);
    return link;
}

Signal readSignal(const Document& doc, const Json& node, const std::string& at,
                  const std::vector<vplc::Module>& bus) {
    doc.object(node, at, kSignalKeys);
    Signal signal;
    signal.to =
        requiredPin(doc, node, at, "to", "a signal", bus, {Kind::DigitalIn, Kind::AnalogIn});
    const std::string shape =
        doc.text(required(doc, node, at, "shape", "a signal"), member(at, "shape"));
    const std::optional<Signal::Shape> known = shapeFromName(shape);
    if (!known) {
        doc.fail(member(at, "shape"),
                 "unknown shape " + inQuotes(shape) + " (known: square, sine, ramp)");
    }
    signal.shape = *known;
    if (signal.to.digital() && signal.shape != Signal::Shape::Square) {
        doc.fail(member(at, "shape"), "a digital input takes only a \"square\" signal");
    }
    if (signal.to.digital() && (node.contains("low") || node.contains("high"))) {
        doc.fail(member(at, node.contains("low") ? "low" : "high"),
                 "a digital input is on or off; \"low\" and \"high\" are for analog inputs");
    }
    readIfThere(doc, node, at, "low", signal.low);
    readIfThere(doc, node, at, "high", signal.high);
    signal.period =
        doc.milliseconds(required(doc, node, at, "period_ms", "a signal"), member(at, "period_ms"));
    if (signal.period.count() == 0) {
        doc.fail(member(at, "period_ms"), "a signal's period is at least 1 ms");
    }
    if (node.contains("duty")) {
        if (signal.shape != Signal::Shape::Square) {
            doc.fail(member(at, "duty"), "\"duty\" is for a \"square\" signal");
        }
        signal.duty = doc.number(node.at("duty"), member(at, "duty"), 0.0, 1.0);
    }
    if (node.contains("repeat")) {
        if (signal.shape != Signal::Shape::Ramp) {
            doc.fail(member(at, "repeat"), "\"repeat\" is for a \"ramp\" signal");
        }
        signal.repeat = doc.flag(node.at("repeat"), member(at, "repeat"));
    }
    readIfThere(doc, node, at, "from_ms", signal.from);
    if (node.contains("until_ms")) {
        signal.until = doc.milliseconds(node.at("until_ms"), member(at, "until_ms"));
        if (*signal.until < signal.from) {
            doc.fail(member(at, "until_ms"),
                     "a signal ends (\"until_ms\") at or after its start "
                     "(\"from_ms\", " +
                         std::to_string(signal.from.count()) + " ms)");
        }
    }
    return signal;
}

Route readRoute(const Document& doc, const Json& node, const std::string& at, int drivers) {
    doc.object(node, at, kRouteKeys);
    Route route;
    constexpr int64_t kLargestId = std::numeric_limits<uint32_t>::max();
    route.from = static_cast<uint32_t>(
        doc.integer(required(doc, node, at, "from", "a route"), member(at, "from"), 0, kLargestId));
    route.to = static_cast<uint32_t>(
        doc.integer(required(doc, node, at, "to", "a route"), member(at, "to"), 0, kLargestId));
    if (node.contains("from_driver")) {
        route.fromDriver = static_cast<int>(
            doc.integer(node.at("from_driver"), member(at, "from_driver"), 0, drivers - 1));
    }
    if (node.contains("to_driver")) {
        route.toDriver = static_cast<int>(
            doc.integer(node.at("to_driver"), member(at, "to_driver"), 0, drivers - 1));
    }
    if (node.contains("map")) {
        const std::string map = doc.text(node.at("map"), member(at, "map"));
        const std::optional<Route::Map> known = mapFromName(map);
        if (!known) {
            doc.fail(member(at, "map"), "unknown map " + inQuotes(map) +
                                            " (known: copy, invert, above, below, scale)");
        }
        route.map = *known;
    }
    const bool compares = route.map == Route::Map::Above || route.map == Route::Map::Below;
    if (compares) {
        route.threshold =
            anyNumber(doc, required(doc, node, at, "threshold", "an \"above\" or \"below\" route"),
                      member(at, "threshold"));
        if (node.contains("hysteresis")) {
            route.hysteresis =
                doc.number(node.at("hysteresis"), member(at, "hysteresis"), 0.0, 1e9);
        }
    } else {
        for (const char* key : {"threshold", "hysteresis"}) {
            if (node.contains(key)) {
                doc.fail(member(at, key),
                         inQuotes(key) + " is for the maps \"above\" and \"below\"");
            }
        }
    }
    if (route.map == Route::Map::Scale) {
        readIfThere(doc, node, at, "gain", route.gain);
        readIfThere(doc, node, at, "offset", route.offset);
    } else {
        for (const char* key : {"gain", "offset"}) {
            if (node.contains(key)) {
                doc.fail(member(at, key), inQuotes(key) + " is for the map \"scale\"");
            }
        }
    }
    readIfThere(doc, node, at, "delay_ms", route.delay);
    readIfThere(doc, node, at, "on_change", route.onChange);
    return route;
}

}  // namespace

std::vector<std::string_view> loopreader::keys() {
    return keysOf({kModelKeys, kWireKeys, kLinkKeys, kSignalKeys, kHostEntryKeys, kRouteKeys});
}

std::vector<PlantModel> loopreader::readPlant(const Document& doc, const Json& node,
                                              const std::vector<vplc::Module>& bus) {
    if (!node.is_array()) {
        doc.fail("/plant", "expected a list of models, each a \"wire\", \"link\" or \"signal\"");
    }
    std::vector<PlantModel> plant;
    for (std::size_t i = 0; i < node.size(); ++i) {
        const std::string at = element("/plant", i);
        const Json& entry = doc.object(node[i], at, kModelKeys);
        if (entry.size() != 1) {
            doc.fail(at, "a model is one of \"wire\", \"link\" or \"signal\"");
        }
        PlantModel model;
        model.path = at;
        if (entry.contains("wire")) {
            model.model = readWire(doc, entry.at("wire"), member(at, "wire"), bus);
        } else if (entry.contains("link")) {
            model.model = readLink(doc, entry.at("link"), member(at, "link"), bus);
        } else {
            model.model = readSignal(doc, entry.at("signal"), member(at, "signal"), bus);
        }
        plant.push_back(std::move(model));
    }
    return plant;
}

std::vector<Route> loopreader::readHost(const Document& doc, const Json& node, int drivers) {
    if (!node.is_array()) {
        doc.fail("/host", "expected a list of routes, each { \"route\": { ... } }");
    }
    std::vector<Route> host;
    for (std::size_t i = 0; i < node.size(); ++i) {
        const std::string at = element("/host", i);
        const Json& entry = doc.object(node[i], at, kHostEntryKeys);
        if (!entry.contains("route")) {
            doc.fail(at, "an entry of the host is a \"route\"");
        }
        Route route = readRoute(doc, entry.at("route"), member(at, "route"), drivers);
        route.path = at;
        host.push_back(std::move(route));
    }
    return host;
}

}  // namespace axlsim
