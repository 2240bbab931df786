#include "axlsim/JsonRenderer.h"

#include <nlohmann/json.hpp>
#include <string>

#include "axlsim/Hex.h"
#include "axlsim/Overloaded.h"
#include "axlsim/ValueText.h"

namespace axlsim {

namespace {

using Json = nlohmann::ordered_json;

Json milliseconds(std::chrono::nanoseconds t) {
    return Json::parse(millisecondsText(t));
}

Json outputsByPosition(const std::vector<std::vector<uint8_t>>& outputs) {
    Json object = Json::object();
    for (std::size_t i = 0; i < outputs.size(); ++i)
        object[std::to_string(i + 1)] = toHex(outputs[i]);
    return object;
}

}  // namespace

JsonRenderer::JsonRenderer(std::ostream& out, const Config& config)
    : out_(out), config_(config), catalog_(config.drivers) {}

void JsonRenderer::happening(const Happening& happening) {
    Json line;
    line["t_ms"] = milliseconds(happening.t);
    auto kind = [&](const char* name) {
        line["kind"] = name;
        if (config_.severalDrivers)
            line["driver"] = happening.driver < 0 ? Json(nullptr) : Json(happening.driver);
    };
    const bool shown = std::visit(
        Overloaded{
            [&](const Happening::Log& log) {
                kind("log");
                line["level"] = log.level;
                line["format"] = log.format;
                line["text"] = log.text;
                return true;
            },
            [&](const Happening::Publish& publish) {
                kind("publish");
                line["id"] = publish.id;
                line["size"] = publish.size;
                line["bytes"] = toHex(publish.bytes);
                const auto value = catalog_.publishedValue(
                    happening.driver < 0 ? 0 : happening.driver, publish.id, publish.bytes);
                if (value) {
                    if (const auto* byte = std::get_if<uint8_t>(&*value))
                        line["value"] = *byte;
                    else
                        line["value"] = floatForJson(std::get<float>(*value));
                }
                return true;
            },
            [&](const Happening::Stop& stop) {
                kind("stop");
                line["message"] = stop.message;
                line["event_id"] = stop.eventId ? Json(*stop.eventId) : Json(nullptr);
                return true;
            },
            [&](const Happening::BusWrite& write) {
                kind("bus_write");
                line["outputs"] = outputsByPosition(write.outputs);
                return true;
            },
            [&](const Happening::Restart&) {
                kind("restart");
                return true;
            },
            [&](const Happening::Exception& exception) {
                kind("exception");
                line["where"] = exception.where;
                line["type"] = exception.type;
                line["what"] = exception.what;
                return true;
            },
            [](const auto&) { return false; },
        },
        happening.what);
    if (shown)
        out_ << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

void JsonRenderer::finish(const RunResult& result) {
    for (std::size_t i = 0; i < result.drivers.size(); ++i) {
        Json line;
        line["kind"] = "final";
        if (config_.severalDrivers)
            line["driver"] = i;
        line["stopped"] = result.drivers[i].stopped;
        line["bus_outputs"] = outputsByPosition(result.busOutputs);
        line["gds_outputs"] = outputsByPosition(result.gdsOutputs);
        line["restarts"] = result.restarts;
        line["publishes"] = result.drivers[i].publishes;
        out_ << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    }
    out_.flush();
}

}  // namespace axlsim
