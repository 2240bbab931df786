// SPDX-License-Identifier: MIT
#include "axlsim/configuration/ConfigReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>
#include <sstream>
#include <string_view>

#include "axlsim/base/Hex.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/ConfigDocument.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/DriverNumber.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/configuration/JsonParser.h"
#include "axlsim/configuration/LoopReader.h"
#include "axlsim/configuration/Milliseconds.h"
#include "axlsim/configuration/PlcOperationName.h"
#include "modules/IbIlConversion.h"

namespace axlsim {

namespace {

using namespace std::chrono_literals;

constexpr auto kDefaultTail = 1000ms;

// The keys known at each place of a configuration.
constexpr std::array<std::string_view, 10> kTopKeys{
    "description", "driver",   "mappings",    "services", "drivers",
    "bus",         "scenario", "expect_stop", "plant",    "host"};
constexpr std::array<std::string_view, 4> kDriverKeys{"name", "serviceName", "deviceType",
                                                      "params"};
constexpr std::array<std::string_view, 1> kMappingKeys{"size"};
constexpr std::array<std::string_view, 4> kServiceKeys{"eventId", "name", "type", "params"};
constexpr std::array<std::string_view, 3> kDriversEntryKeys{"driver", "mappings", "services"};
constexpr std::array<std::string_view, 6> kStepKeys{"at_ms", "input", "event",
                                                    "plc",   "end",   "note"};
constexpr std::array<std::string_view, 4> kInputKeys{"module", "pin", "value", "raw"};
constexpr std::array<std::string_view, 1> kPlcRequestKeys{"operation"};
constexpr std::array<std::string_view, 6> kEventKeys{"id",   "value", "bytes",
                                                     "null", "size",  "driver"};
constexpr std::size_t kChunk = 64 * 1024;
constexpr std::size_t kMebibyte = 1024 * 1024;
constexpr const char* kStandardInput = "standard input";

std::string tooLarge(std::size_t limit) {
    const std::string size = limit % kMebibyte == 0 ? std::to_string(limit / kMebibyte) + " MiB"
                                                    : std::to_string(limit) + " bytes";
    return "is larger than " + size + ", the most axlsim reads as a configuration";
}

// Calls `read` with the number, the value and the place of each entry of a table ("mappings",
// "services") whose keys are unsigned numbers written as texts, once the table has proved an
// object (else `expected`) and the entry's keys are among `keys`.
// Two keys that name one number ("1" and "01") are refused like a key given twice.
template <class Read>
void forEachEntry(const Document& doc, const Json& table, const std::string& at,
                  const char* expected, const char* what, std::span<const std::string_view> keys,
                  Read read) {
    if (!table.is_object()) {
        doc.fail(at, expected);
    }
    Document::NumberedKeys numbers(doc, at, what);
    for (const auto& [key, value] : table.items()) {
        const std::string entry = member(at, key);
        const unsigned number = doc.tableKey(key, entry);
        numbers.add(number, key);
        doc.object(value, entry, keys);
        read(number, value, entry);
    }
}

Config::Driver readDriver(const Document& doc, const Json* driver, const Json* mappings,
                          const Json* services, const std::string& path) {
    Config::Driver result;
    result.path = path;
    if (driver != nullptr) {
        const std::string at = member(path, "driver");
        doc.object(*driver, at, kDriverKeys);
        if (driver->contains("name")) {
            result.name = doc.text(driver->at("name"), member(at, "name"));
        }
        if (driver->contains("serviceName")) {
            result.serviceName = doc.text(driver->at("serviceName"), member(at, "serviceName"));
        }
        if (driver->contains("deviceType")) {
            result.deviceType = doc.text(driver->at("deviceType"), member(at, "deviceType"));
        }
        if (driver->contains("params")) {
            result.params = doc.texts(driver->at("params"), member(at, "params"));
        }
    }
    if (mappings != nullptr) {
        forEachEntry(
            doc, *mappings, member(path, "mappings"), "expected an object of event ids", "event id",
            kMappingKeys, [&](unsigned id, const Json& value, const std::string& entry) {
                if (!value.contains("size")) {
                    doc.fail(entry, "a mapping needs its \"size\" (nDataSize, in bytes)");
                }
                result.mappings[id] =
                    static_cast<uint16_t>(doc.integer(value.at("size"), member(entry, "size"), 0,
                                                      std::numeric_limits<uint16_t>::max()));
            });
    }
    if (services != nullptr) {
        forEachEntry(
            doc, *services, member(path, "services"), "expected an object of services", "service",
            kServiceKeys, [&](unsigned serviceKey, const Json& value, const std::string& entry) {
                Config::Service service;
                if (!value.contains("eventId")) {
                    doc.fail(entry, "a service needs its \"eventId\"");
                }
                service.eventId =
                    static_cast<uint32_t>(doc.integer(value.at("eventId"), member(entry, "eventId"),
                                                      0, std::numeric_limits<uint32_t>::max()));
                if (!value.contains("type")) {
                    doc.fail(entry, "a service needs its \"type\" (the service text)");
                }
                service.type = doc.text(value.at("type"), member(entry, "type"));
                if (value.contains("name")) {
                    service.name = doc.text(value.at("name"), member(entry, "name"));
                }
                if (value.contains("params")) {
                    service.params = doc.texts(value.at("params"), member(entry, "params"));
                }
                result.services[serviceKey] = std::move(service);
            });
    }
    return result;
}

std::vector<Config::Driver> readDrivers(const Document& doc, const Json& root) {
    const bool single =
        root.contains("driver") || root.contains("mappings") || root.contains("services");
    if (!root.contains("drivers")) {
        auto optional = [&root](const char* key) {
            return root.contains(key) ? &root.at(key) : nullptr;
        };
        return {
            readDriver(doc, optional("driver"), optional("mappings"), optional("services"), "")};
    }
    if (single) {
        doc.fail("/drivers",
                 "use either \"drivers\" or \"driver\", \"mappings\" and "
                 "\"services\", not both");
    }
    const Json& list = root.at("drivers");
    if (!list.is_array() || list.empty()) {
        doc.fail("/drivers",
                 "expected a list of drivers, each with its \"driver\", \"mappings\" "
                 "and \"services\"");
    }
    std::vector<Config::Driver> drivers;
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string at = element("/drivers", i);
        const Json& entry = doc.object(list[i], at, kDriversEntryKeys);
        auto optional = [&entry](const char* key) {
            return entry.contains(key) ? &entry.at(key) : nullptr;
        };
        drivers.push_back(
            readDriver(doc, optional("driver"), optional("mappings"), optional("services"), at));
    }
    return drivers;
}

// Without "bus", every position up to a driver's "Consecutive Number" holds a module: the type of
// the driver at that position, else of the nearest driver after it.
std::vector<vplc::Module> defaultBus(const std::vector<Config::Driver>& drivers) {
    struct Placed {
        int position;
        vplc::Module module;
    };
    std::vector<Placed> placed;
    int length = 1;
    for (const Config::Driver& driver : drivers) {
        const auto it = driver.params.find("Consecutive Number");
        const DriverNumber number = DriverNumber::read(it != driver.params.end() ? it->second : "");
        const int position =
            number.throws() ? 1 : std::clamp(number.value(), 1, configreader::kMaxBusModules);
        length = std::max(length, position);
        placed.push_back(
            {position,
             vplc::moduleFromOrderName(driver.deviceType).value_or(vplc::Module::DI8_DO8)});
    }
    std::stable_sort(placed.begin(), placed.end(),
                     [](const Placed& a, const Placed& b) { return a.position < b.position; });
    std::vector<vplc::Module> bus;
    for (int position = 1; position <= length; ++position) {
        const auto next = std::find_if(placed.begin(), placed.end(), [position](const Placed& p) {
            return p.position >= position;
        });
        bus.push_back(next->module);
    }
    return bus;
}

std::vector<vplc::Module> readBus(const Document& doc, const Json& node) {
    if (!node.is_array() || node.empty()) {
        doc.fail("/bus", "expected a list of module types, one per position from 1");
    }
    if (node.size() > static_cast<std::size_t>(configreader::kMaxBusModules)) {
        doc.fail("/bus", "an Axioline F bus holds at most " +
                             std::to_string(configreader::kMaxBusModules) + " modules");
    }
    std::vector<vplc::Module> bus;
    for (std::size_t i = 0; i < node.size(); ++i) {
        const std::string at = element("/bus", i);
        const std::string name = doc.text(node[i], at);
        const auto module = vplc::moduleFromOrderName(name);
        if (!module) {
            doc.fail(at, "unknown module type " + inQuotes(name) +
                             " (known: " + std::string(vplc::orderName(vplc::Module::DI8_DO8)) +
                             ", " + std::string(vplc::orderName(vplc::Module::AI2_AO2)) + ")");
        }
        bus.push_back(*module);
    }
    return bus;
}

Config::Input readInput(const Document& doc, const Json& node, const std::string& at,
                        const std::vector<vplc::Module>& bus) {
    doc.object(node, at, kInputKeys);
    Config::Input input;
    if (!node.contains("module") || !node.contains("pin")) {
        doc.fail(at, "an input needs its \"module\" (bus position) and \"pin\"");
    }
    input.position = static_cast<int>(
        doc.integer(node.at("module"), member(at, "module"), 1, static_cast<int64_t>(bus.size())));
    const vplc::Module module = bus[static_cast<std::size_t>(input.position - 1)];
    const bool digital = module == vplc::Module::DI8_DO8;
    input.pin =
        static_cast<int>(doc.integer(node.at("pin"), member(at, "pin"), 0, digital ? 7 : 1));
    const bool hasValue = node.contains("value");
    const bool hasRaw = node.contains("raw");
    if (hasValue == hasRaw) {
        doc.fail(at, digital ? "a digital input needs its \"value\" (0 or 1)"
                             : "an analog input needs either \"raw\" (the IB IL word) or "
                               "\"value\" (in the engineering unit)");
    }
    if (digital) {
        if (hasRaw) {
            doc.fail(member(at, "raw"),
                     "\"raw\" is for analog channels; a digital input takes "
                     "\"value\" 0 or 1");
        }
        const Json& value = node.at("value");
        input.value = value.is_boolean()
                          ? (value.get<bool>() ? 1 : 0)
                          : static_cast<uint16_t>(doc.integer(value, member(at, "value"), 0, 1));
        return input;
    }
    if (hasRaw) {
        input.value = static_cast<uint16_t>(doc.integer(node.at("raw"), member(at, "raw"), 0,
                                                        std::numeric_limits<uint16_t>::max()));
        return input;
    }
    const Json& value = node.at("value");
    const float highest = from_ib_il(std::numeric_limits<uint16_t>::max());
    if (!value.is_number() || value.get<double>() < 0.0 ||
        static_cast<float>(value.get<double>()) > highest) {
        doc.fail(member(at, "value"), "expected a number from 0 to " + std::to_string(highest) +
                                          ", the range of an IB IL word");
    }
    input.value = to_ib_il(static_cast<float>(value.get<double>()));
    return input;
}

Config::Event readEvent(const Document& doc, const Json& node, const std::string& at,
                        const std::vector<Config::Driver>& drivers) {
    doc.object(node, at, kEventKeys);
    Config::Event event;
    if (node.contains("driver")) {
        event.driver = static_cast<int>(doc.integer(node.at("driver"), member(at, "driver"), 0,
                                                    static_cast<int64_t>(drivers.size()) - 1));
    }
    if (!node.contains("id")) {
        doc.fail(at, "an event needs its \"id\"");
    }
    event.id = static_cast<uint32_t>(
        doc.integer(node.at("id"), member(at, "id"), 0, std::numeric_limits<uint32_t>::max()));
    const int given = (node.contains("value") ? 1 : 0) + (node.contains("bytes") ? 1 : 0) +
                      (node.contains("null") ? 1 : 0);
    if (given != 1) {
        doc.fail(at, "an event carries exactly one of \"value\", \"bytes\" and \"null\"");
    }

    if (node.contains("value")) {
        const Json& value = node.at("value");
        if (EventCatalog(drivers).feedsAnalogOutput(event.driver, event.id)) {
            if (!value.is_number()) {
                doc.fail(member(at, "value"), "expected a number: event " +
                                                  std::to_string(event.id) +
                                                  " feeds an analog output and carries a float");
            }
            const float number = static_cast<float>(value.get<double>());
            std::vector<uint8_t> bytes(sizeof number);
            std::memcpy(bytes.data(), &number, sizeof number);
            event.payload = std::move(bytes);
        } else {
            const uint8_t byte =
                value.is_boolean()
                    ? (value.get<bool>() ? 1 : 0)
                    : static_cast<uint8_t>(doc.integer(value, member(at, "value"), 0, 255));
            event.payload = std::vector<uint8_t>{byte};
        }
    } else if (node.contains("bytes")) {
        const std::string text = doc.text(node.at("bytes"), member(at, "bytes"));
        event.payload = fromHex(text);
        if (!event.payload) {
            doc.fail(member(at, "bytes"), "expected hexadecimal bytes, two digits each (\"01ff\")");
        }
    } else if (!doc.flag(node.at("null"), member(at, "null"))) {
        doc.fail(member(at, "null"),
                 "\"null\": true sends the event with a null pData; leave it "
                 "out otherwise");
    }

    const auto& mappings = drivers[static_cast<std::size_t>(event.driver)].mappings;
    const auto mapping = mappings.find(event.id);
    if (node.contains("size")) {
        event.size = static_cast<uint32_t>(doc.integer(node.at("size"), member(at, "size"), 0,
                                                       std::numeric_limits<uint32_t>::max()));
    } else if (mapping != mappings.end()) {
        event.size = mapping->second;
    } else {
        event.size = event.payload ? static_cast<uint32_t>(event.payload->size()) : 0;
    }
    return event;
}

Config::Plc readPlc(const Document& doc, const Json& node, const std::string& at) {
    if (node.is_string()) {
        const std::string name = node.get<std::string>();
        const auto operation = plcOperationFromName(name);
        if (!operation) {
            doc.fail(at, "unknown PLC operation " + inQuotes(name) +
                             " (known: " + plcOperationNames() + ")");
        }
        return Config::Plc{*operation};
    }
    return Config::Plc{static_cast<PlcOperation>(doc.integer(node, at, 0, PlcOperation_Unload))};
}

struct Scenario {
    std::vector<Config::Step> steps;
    std::optional<std::chrono::milliseconds> end;
};

Scenario readScenario(const Document& doc, const Json& node, const std::vector<vplc::Module>& bus,
                      const std::vector<Config::Driver>& drivers) {
    if (!node.is_array()) {
        doc.fail("/scenario", "expected a list of steps");
    }
    Scenario scenario;
    for (std::size_t i = 0; i < node.size(); ++i) {
        const std::string at = element("/scenario", i);
        const Json& step = doc.object(node[i], at, kStepKeys);
        if (!step.contains("at_ms")) {
            doc.fail(at, "a step needs its time, \"at_ms\"");
        }
        Config::Step result;
        result.path = at;
        result.at = doc.milliseconds(step.at("at_ms"), member(at, "at_ms"));
        const int actions = (step.contains("input") ? 1 : 0) + (step.contains("event") ? 1 : 0) +
                            (step.contains("plc") ? 1 : 0) + (step.contains("end") ? 1 : 0);
        if (actions > 1) {
            doc.fail(at, "a step does one thing: \"input\", \"event\", \"plc\" or \"end\"");
        }
        if (actions == 0 && !step.contains("note")) {
            doc.fail(at, "a step needs one of \"input\", \"event\", \"plc\", \"end\" or \"note\"");
        }
        if (step.contains("note")) {
            result.note = doc.text(step.at("note"), member(at, "note"));
        }
        if (step.contains("input")) {
            result.action = readInput(doc, step.at("input"), member(at, "input"), bus);
        }
        if (step.contains("event")) {
            result.action = readEvent(doc, step.at("event"), member(at, "event"), drivers);
        }
        if (step.contains("plc")) {
            result.action = readPlc(doc, step.at("plc"), member(at, "plc"));
        }
        if (step.contains("end")) {
            if (!doc.flag(step.at("end"), member(at, "end"))) {
                doc.fail(member(at, "end"), "\"end\": true ends the run; leave it out otherwise");
            }
            if (scenario.end) {
                doc.fail(at, "the scenario has a second \"end\"");
            }
            scenario.end = result.at;
        }
        scenario.steps.push_back(std::move(result));
    }
    std::stable_sort(scenario.steps.begin(), scenario.steps.end(),
                     [](const Config::Step& a, const Config::Step& b) { return a.at < b.at; });
    if (scenario.end) {
        for (const Config::Step& step : scenario.steps) {
            if (step.at > *scenario.end) {
                doc.fail(step.path, "this step comes after the end of the run (\"end\" at " +
                                        std::to_string(scenario.end->count()) + " ms)");
            }
        }
    }
    return scenario;
}

}  // namespace

std::vector<std::string_view> configreader::keys() {
    std::vector<std::string_view> all =
        keysOf({kTopKeys, kDriverKeys, kMappingKeys, kServiceKeys, kDriversEntryKeys, kStepKeys,
                kInputKeys, kEventKeys});
    const auto loop = loopreader::keys();
    all.insert(all.end(), loop.begin(), loop.end());
    return all;
}

Config::Input configreader::inputStep(const Json& node, const Config& config,
                                      const std::string& name) {
    return readInput(Document(name), node, "", config.bus);
}

Config::Event configreader::eventStep(const Json& node, const Config& config,
                                      const std::string& name) {
    return readEvent(Document(name), node, "", config.drivers);
}

Config::Plc configreader::plcStep(const Json& node, const std::string& name) {
    const Document doc(name);
    doc.object(node, "", kPlcRequestKeys);
    if (!node.contains("operation")) {
        doc.fail("", "a PLC request needs its \"operation\"");
    }
    return readPlc(doc, node.at("operation"), "/operation");
}

Config configreader::readFile(const std::string& file) {
    if (file == "-") {
        return readStream(std::cin, kStandardInput);
    }
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) {
        throw ConfigError(file, "",
                          "cannot open the file: " +
                              (error ? error.message() : std::string(std::strerror(ENOENT))));
    }
    if (std::filesystem::is_directory(status)) {
        throw ConfigError(file, "",
                          "is a directory; give a configuration file, or - for standard input");
    }
    if (!std::filesystem::is_regular_file(status)) {
        throw ConfigError(file, "",
                          "is not a regular file; give a configuration file, or - for standard "
                          "input");
    }
    if (std::filesystem::file_size(file, error) > kMaxBytes) {
        throw ConfigError(file, "", tooLarge(kMaxBytes));
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        throw ConfigError(file, "", std::string("cannot open the file: ") + std::strerror(errno));
    }
    return readStream(in, file);
}

Config configreader::readStream(std::istream& in, const std::string& name, std::size_t limit) {
    std::string text;
    std::vector<char> chunk(kChunk);
    while (in.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || in.gcount() > 0) {
        text.append(chunk.data(), static_cast<std::size_t>(in.gcount()));
        if (text.size() > limit) {
            throw ConfigError(name, "", tooLarge(limit));
        }
    }
    if (in.bad()) {
        throw ConfigError(name, "", std::string("cannot read: ") + std::strerror(errno));
    }
    return readText(text, name);
}

Config configreader::readText(const std::string& text, const std::string& name) {
    const Document doc(name, &text);
    const Json root = jsonparser::parse(text, name);
    doc.object(root, "", kTopKeys);

    Config config;
    config.file = name;
    if (root.contains("description")) {
        config.description = doc.text(root.at("description"), "/description");
    }
    config.drivers = readDrivers(doc, root);
    config.severalDrivers = root.contains("drivers");
    config.bus = root.contains("bus") ? readBus(doc, root.at("bus")) : defaultBus(config.drivers);
    if (root.contains("plant")) {
        config.plant = loopreader::readPlant(doc, root.at("plant"), config.bus);
    }
    if (root.contains("host")) {
        config.host =
            loopreader::readHost(doc, root.at("host"), static_cast<int>(config.drivers.size()));
    }
    if (root.contains("expect_stop")) {
        config.expectStop = doc.flag(root.at("expect_stop"), "/expect_stop");
    }

    Scenario scenario;
    if (root.contains("scenario")) {
        scenario = readScenario(doc, root.at("scenario"), config.bus, config.drivers);
    }
    config.scenario = std::move(scenario.steps);
    if (scenario.end) {
        config.end = *scenario.end;
    } else {
        config.end =
            (config.scenario.empty() ? std::chrono::milliseconds(0) : config.scenario.back().at) +
            kDefaultTail;
    }
    return config;
}

}  // namespace axlsim
