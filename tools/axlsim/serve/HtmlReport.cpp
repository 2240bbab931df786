// SPDX-License-Identifier: MIT
#include "axlsim/serve/HtmlReport.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "axlsim/render/JsonRenderer.h"
#include "axlsim/render/ValueText.h"
#include "axlsim/serve/Assets.h"

namespace axlsim {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kDataMark = "/*AXLSIM_DATA*/";

// JSON put inside a script element. The HTML parser reads the element's text before JavaScript
// does: "</script" ends it early, and "<!--" followed by "<script" keeps it open past its end
// tag, which leaves the page blank. So "<", ">" and "&" are written as JSON escapes, which only
// strings hold and JSON reads as the same text; so are U+2028 and U+2029, which older
// JavaScript does not take inside a string.
std::string forScript(const std::string& json) {
    std::string out;
    out.reserve(json.size());
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (c == '<') {
            out += "\\u003c";
        } else if (c == '>') {
            out += "\\u003e";
        } else if (c == '&') {
            out += "\\u0026";
        } else if (c == '\xe2' && json.compare(i + 1, 2, "\x80\xa8") == 0) {
            out += "\\u2028";
            i += 2;
        } else if (c == '\xe2' && json.compare(i + 1, 2, "\x80\xa9") == 0) {
            out += "\\u2029";
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

Json summary(const Config& config, const RunResult& result) {
    Json data;
    data["file"] = config.file;
    data["description"] = config.description;
    data["end_ms"] = Json::parse(millisecondsText(result.end));
    Json bus = Json::array();
    for (vplc::Module module : config.bus) {
        bus.push_back(std::string(vplc::orderName(module)));
    }
    data["bus"] = bus;
    Json drivers = Json::array();
    for (std::size_t i = 0; i < config.drivers.size(); ++i) {
        const Config::Driver& driver = config.drivers[i];
        Json services = Json::array();
        for (const auto& [key, service] : driver.services) {
            services.push_back(Json{{"key", key},
                                    {"eventId", service.eventId},
                                    {"type", service.type},
                                    {"name", service.name}});
        }
        drivers.push_back(Json{
            {"name", driver.name}, {"stopped", result.drivers[i].stopped}, {"services", services}});
    }
    data["drivers"] = drivers;
    data["restarts"] = result.restarts;
    return data;
}

}  // namespace

void HtmlReport::write(std::ostream& out, const Config& config, const RunResult& result) {
    std::ostream nowhere(nullptr);
    const JsonRenderer renderer(nowhere, config);
    Json data = summary(config, result);
    Json timeline = Json::array();
    std::size_t seq = 0;
    for (const Happening& happening : result.timeline) {
        if (auto line = renderer.line(happening)) {
            (*line)["seq"] = ++seq;
            timeline.push_back(std::move(*line));
        }
    }
    data["timeline"] = std::move(timeline);

    std::string page = Assets::reportPage();
    const std::string json = forScript(data.dump(-1, ' ', false, Json::error_handler_t::replace));
    const auto mark = page.find(kDataMark);
    if (mark != std::string::npos) {
        page.replace(mark, kDataMark.size(), json);
    }
    out << page;
}

}  // namespace axlsim
