// SPDX-License-Identifier: MIT
#include "axlsim/render/HtmlReport.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "axlsim/base/Overloaded.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/render/ReportPage.h"

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

// The signal of the chart that a happening moves, or empty for one the chart does not draw.
std::string signalOf(const Happening& happening) {
    const std::string driver = std::to_string(happening.driver) + ":";
    return std::visit(Overloaded{
                          // A step and the plant move the same input.
                          [](const Happening::Input& input) {
                              return "in " + std::to_string(input.position) + "." +
                                     std::to_string(input.pin);
                          },
                          [](const Happening::PlantMove& move) {
                              return "in " + std::to_string(move.to.position) + "." +
                                     std::to_string(move.to.index);
                          },
                          [](const Happening::BusWrite&) { return std::string("outputs"); },
                          [&](const Happening::Publish& publish) {
                              return driver + "published " + std::to_string(publish.id);
                          },
                          [&](const Happening::Event& event) {
                              return driver + "received " + std::to_string(event.id);
                          },
                          [](const Happening::Stop&) { return std::string("stop"); },
                          [](const Happening::Restart&) { return std::string("restart"); },
                          [](const Happening::Exception&) { return std::string("exception"); },
                          [](const auto&) { return std::string(); },
                      },
                      happening.what);
}

std::string dumped(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

HtmlReport::HtmlReport(const Config& config, std::chrono::nanoseconds plannedEnd)
    : config_(config),
      renderer_(nowhere_, config),
      partLength_(std::max(plannedEnd / kParts, std::chrono::nanoseconds(1))) {}

void HtmlReport::happening(const Happening& happening) {
    auto line = renderer_.line(happening);
    if (!line) {
        return;
    }
    (*line)["seq"] = ++lines_;
    std::string text = jsonLineText(*line, happening.t);
    if (std::string signal = signalOf(happening); !signal.empty()) {
        ++changes_;
        keepChange(Change{text, std::move(signal), happening.t / partLength_});
    }
    if (first_.size() < kFirstLines) {
        first_.push_back(std::move(text));
        return;
    }
    last_.push_back(std::move(text));
    if (last_.size() > kLastLines) {
        last_.pop_front();
    }
}

// Of each signal, the first and the last change in each part: a waveform drawn over the whole run
// looks the same, and the table has every line near the start and the end.
void HtmlReport::keepChange(Change change) {
    if (!thinned_) {
        kept_.push_back(std::move(change));
        if (kept_.size() <= kWholeChanges) {
            return;
        }
        thinned_ = true;
        std::vector<Change> all = std::move(kept_);
        kept_.clear();
        for (Change& each : all) {
            keepChange(std::move(each));
        }
        return;
    }
    const auto found = bySignal_.find(change.signal);
    if (found == bySignal_.end() || found->second.part != change.part) {
        bySignal_[change.signal] = Kept{change.part, kept_.size(), std::nullopt};
        kept_.push_back(std::move(change));
    } else if (!found->second.last) {
        found->second.last = kept_.size();
        kept_.push_back(std::move(change));
    } else {
        kept_[*found->second.last] = std::move(change);
    }
}

void HtmlReport::write(std::ostream& out, const RunResult& result,
                       const std::string& interruption) const {
    Json data = summary(config_, result);
    data["timeline"] = Json::array();
    std::string json = dumped(data);
    // Put together from the lines as they are kept: the same text as the whole object dumped.
    json.erase(json.size() - std::string_view("[]}").size());
    json += '[';
    bool more = false;
    for (const std::string& line : first_) {
        json += more ? "," : "";
        json += line;
        more = true;
    }
    for (const std::string& line : last_) {
        json += more ? "," : "";
        json += line;
        more = true;
    }
    json += ']';
    const bool tableWhole = lines_ == first_.size() + last_.size();
    if (!tableWhole || thinned_) {
        json += ",\"waves\":[";
        for (std::size_t i = 0; i < kept_.size(); ++i) {
            json += i > 0 ? "," : "";
            json += kept_[i].line;
        }
        json += ']';
        Json bounds;
        bounds["lines"] = lines_;
        bounds["first_lines"] = first_.size();
        bounds["last_lines"] = last_.size();
        bounds["changes"] = changes_;
        bounds["shown_changes"] = kept_.size();
        bounds["part_ms"] = thinned_ ? Json::parse(millisecondsText(partLength_)) : Json(nullptr);
        json += ",\"bounds\":" + dumped(bounds);
    }
    if (!interruption.empty()) {
        Json interrupted;
        interrupted["by"] = interruption;
        interrupted["t_ms"] = Json::parse(millisecondsText(result.end));
        json += ",\"interrupted\":" + dumped(interrupted);
    }
    json += '}';

    std::string page = reportPage();
    const auto mark = page.find(kDataMark);
    if (mark != std::string::npos) {
        page.replace(mark, kDataMark.size(), forScript(json));
    }
    out << page;
}

}  // namespace axlsim
