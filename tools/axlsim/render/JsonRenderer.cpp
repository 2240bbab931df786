// SPDX-License-Identifier: MIT
#include "axlsim/render/JsonRenderer.h"

#include <nlohmann/json.hpp>
#include <string>

#include "axlsim/base/Hex.h"
#include "axlsim/base/Overloaded.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/PlcOperationName.h"

namespace axlsim {

namespace {

using Json = nlohmann::ordered_json;

Json milliseconds(std::chrono::nanoseconds t) {
    return Json::parse(millisecondsText(t));
}

Json outputsByPosition(const std::vector<std::vector<uint8_t>>& outputs) {
    Json object = Json::object();
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        object[std::to_string(i + 1)] = toHex(outputs[i]);
    }
    return object;
}

}  // namespace

// nlohmann writes a double with Grisu2, whose text is not always the shortest
// ("1013.8897920000001" for 1013.889792), so the time is written from the nanoseconds.
std::string jsonLineText(const Json& line, std::chrono::nanoseconds t) {
    constexpr std::string_view kStart = "{\"t_ms\":";
    std::string written = line.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (written.starts_with(kStart)) {
        const auto end = written.find_first_of(",}", kStart.size());
        written.replace(kStart.size(), end - kStart.size(), millisecondsText(t));
    }
    return written;
}

JsonRenderer::JsonRenderer(std::ostream& out, const Config& config)
    : out_(out), config_(config), catalog_(config.drivers) {}

void JsonRenderer::happening(const Happening& happening) {
    if (const auto object = line(happening)) {
        out_ << jsonLineText(*object, happening.t) << '\n';
    }
}

std::optional<nlohmann::ordered_json> JsonRenderer::line(const Happening& happening) const {
    Json line;
    line["t_ms"] = milliseconds(happening.t);
    auto kind = [&](const char* name) {
        line["kind"] = name;
        if (config_.severalDrivers) {
            line["driver"] = happening.driver < 0 ? Json(nullptr) : Json(happening.driver);
        }
    };
    bool shown = true;
    std::visit(Overloaded{
                   [&](const Happening::Log& log) {
                       kind("log");
                       line["level"] = log.level;
                       line["format"] = log.format;
                       line["text"] = log.text;
                   },
                   [&](const Happening::Publish& publish) {
                       kind("publish");
                       line["id"] = publish.id;
                       line["size"] = publish.size;
                       line["bytes"] = toHex(publish.bytes);
                       const auto value = catalog_.publishedValue(
                           happening.driver < 0 ? 0 : happening.driver, publish.id, publish.bytes);
                       if (value) {
                           if (const auto* byte = std::get_if<uint8_t>(&*value)) {
                               line["value"] = *byte;
                           } else {
                               line["value"] = floatForJson(std::get<float>(*value));
                           }
                       }
                   },
                   [&](const Happening::Stop& stop) {
                       kind("stop");
                       line["message"] = stop.message;
                       line["event_id"] = stop.eventId ? Json(*stop.eventId) : Json(nullptr);
                   },
                   [&](const Happening::BusWrite& write) {
                       kind("bus_write");
                       line["outputs"] = outputsByPosition(write.outputs);
                   },
                   [&](const Happening::Restart&) { kind("restart"); },
                   [&](const Happening::Exception& exception) {
                       kind("exception");
                       line["where"] = exception.where;
                       line["type"] = exception.type;
                       line["what"] = exception.what;
                   },
                   [&](const Happening::Input& input) {
                       line["kind"] = "input";
                       line["module"] = input.position;
                       line["pin"] = input.pin;
                       if (config_.bus[static_cast<std::size_t>(input.position - 1)] ==
                           vplc::Module::DI8_DO8) {
                           line["value"] = input.value;
                       } else {
                           line["raw"] = input.value;
                       }
                       if (!input.source.empty()) {
                           line["source"] = input.source;
                       }
                   },
                   [&](const Happening::Event& event) {
                       kind("event");
                       line["id"] = event.id;
                       line["size"] = event.size;
                       if (event.payload) {
                           line["bytes"] = toHex(*event.payload);
                       } else {
                           line["null"] = true;
                       }
                       if (!event.source.empty()) {
                           line["source"] = event.source;
                       }
                   },
                   [&](const Happening::Plc& plc) {
                       line["kind"] = "plc";
                       const std::string name = plcOperationName(plc.operation);
                       line["operation"] = name == "?" ? Json(plc.operation) : Json(name);
                       if (!plc.source.empty()) {
                           line["source"] = plc.source;
                       }
                   },
                   [&](const Happening::Note& note) {
                       line["kind"] = "note";
                       if (config_.severalDrivers && happening.driver >= 0) {
                           line["driver"] = happening.driver;
                       }
                       line["text"] = note.text;
                   },
                   [&](const Happening::PlantMove& move) {
                       shown = move.shown;
                       kind("plant");
                       line["model"] = move.model;
                       line["to"] = move.to.name();
                       line[move.to.digital() ? "value" : "raw"] = move.value;
                       if (move.from) {
                           line["from"] = move.from->name();
                       }
                   },
                   [&](const Happening::Routed& routed) {
                       kind("route");
                       line["from"] = routed.from;
                       line["to"] = routed.to;
                       line["driver"] = happening.driver;
                       line["bytes"] = toHex(routed.bytes);
                   },
               },
               happening.what);
    if (!shown) {
        return std::nullopt;
    }
    return line;
}

void JsonRenderer::finish(const RunResult& result) {
    for (std::size_t i = 0; i < result.drivers.size(); ++i) {
        Json line;
        line["t_ms"] = milliseconds(result.end);
        line["kind"] = "final";
        if (config_.severalDrivers) {
            line["driver"] = i;
        }
        line["stopped"] = result.drivers[i].stopped;
        line["bus_outputs"] = outputsByPosition(result.busOutputs);
        line["gds_outputs"] = outputsByPosition(result.gdsOutputs);
        line["restarts"] = result.restarts;
        line["publishes"] = result.drivers[i].publishes;
        out_ << jsonLineText(line, result.end) << '\n';
    }
    out_.flush();
}

void JsonRenderer::interrupted(std::chrono::nanoseconds at, const std::string& signal) {
    Json line;
    line["t_ms"] = milliseconds(at);
    line["kind"] = "interrupted";
    line["signal"] = signal;
    out_ << jsonLineText(line, at) << '\n';
    out_.flush();
}

}  // namespace axlsim
