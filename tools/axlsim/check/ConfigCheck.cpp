// SPDX-License-Identifier: MIT
#include "axlsim/check/ConfigCheck.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "ServiceType.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/DriverNumber.h"
#include "modules/IbIlConversion.h"
#include "orbel/LogFormat.h"

namespace axlsim {

namespace {

using Finding = ConfigCheck::Finding;
using Effect = ConfigCheck::Effect;

constexpr std::array<std::string_view, 5> kServiceTexts{"AnalogIn", "AnalogOut", "DigitalIn",
                                                        "DigitalOut", "RestartDevice"};
constexpr std::array<std::string_view, 2> kDeviceTypes{"AXL_F_DI8_1_DO8_1", "AXL_F_AI2_AO2"};

// What the driver knows of a terminal module: its service kinds, pins and ports.
struct ModuleModel {
    vplc::Module module;
    std::string_view deviceType;
    ServiceType input;
    ServiceType output;
    int pins;
    const char* range;
    std::string_view inPort;
    std::string_view outPort;

    bool supports(ServiceType kind) const {
        return kind == input || kind == output || kind == RestartDevice;
    }
};

constexpr std::array<ModuleModel, 2> kModules{{
    {vplc::Module::DI8_DO8, "AXL_F_DI8_1_DO8_1", DigitalIn, DigitalOut, 8, "0 - 7", "DI8", "DO8"},
    {vplc::Module::AI2_AO2, "AXL_F_AI2_AO2", AnalogIn, AnalogOut, 2, "0 - 1", "AI32", "AQ32"},
}};

const ModuleModel* modelOf(const std::string& deviceType) {
    for (const ModuleModel& model : kModules) {
        if (deviceType == model.deviceType) {
            return &model;
        }
    }
    return nullptr;
}

const ModuleModel& modelOf(vplc::Module module) {
    return module == vplc::Module::DI8_DO8 ? kModules[0] : kModules[1];
}

// The driver's refusals of a pin, word for word. A copy on purpose rather than a header shared
// with the driver: the driver writes its texts inline in the calls that log them (in the
// controller's style, C++17, nothing but what the driver needs), and this copy is a second,
// independent statement of them that CheckAgainstDriverTest holds against the running driver,
// so that a text changed on either side fails a test instead of changing both silently.
struct Refusal {
    const char* notAvailableFormat;
    const char* notAvailable;
    const char* inUseFormat;
    const char* inUse;
};

Refusal refusalFor(ServiceType kind) {
    switch (kind) {
        case DigitalIn:
            return {"Digital input pin with number &d is not available. Valid numbers are %s.",
                    "Invalid digital input number.",
                    "Digital input pin with number %d is already in use.", "Pin already in use"};
        case AnalogIn:
            return {"Analog input pin with number &d is not available. Valid numbers are %s",
                    "Invalid analog input number.",
                    "Analog input pin with number %d is already in use.", "Pin already in use."};
        case DigitalOut:
            return {"Digital output pin with number &d is not available. Valid numbers are %s.",
                    "Invalid digital output pin number.",
                    "Digital output pin with number %d is already in use.", "Pin already in use."};
        default:
            return {"Analog output pin with number &d is not available. Valid numbers are %s.",
                    "Invalid analog output number",
                    "Analog output pin with number %d is already in use.", "Pin already in use"};
    }
}

constexpr const char* kUnsupported = "Unsupported service type.";

// The settings the driver reads.
constexpr std::string_view kConsecutiveNumber = "Consecutive Number";
constexpr std::string_view kPinNum = "PinNum";
constexpr std::string_view kInitVal = "InitVal";

ServiceType serviceTypeOf(const std::string& text) {
    for (std::size_t i = 0; i < kServiceTexts.size(); ++i) {
        if (text == kServiceTexts[i]) {
            return static_cast<ServiceType>(i);
        }
    }
    return Unsupported;
}

std::string folded(std::string_view text) {
    std::string result;
    for (char c : text) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return result;
}

// The known text that differs from `text` only in letter case or blanks, if any.
template <std::size_t N>
std::string meant(const std::string& text, const std::array<std::string_view, N>& known) {
    for (std::string_view candidate : known) {
        if (folded(text) == folded(candidate)) {
            return std::string(candidate);
        }
    }
    return "";
}

// The edits (insertions, deletions, replacements) that turn one text into the other.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The known key nearest to a key the driver does not read, if one is near enough to be meant:
// at most a third of its letters differ, ignoring case and blanks.
std::string nearestKey(const std::string& key, const std::vector<std::string_view>& known) {
    std::string nearest;
    std::size_t best = 0;
    for (std::string_view candidate : known) {
        const std::size_t distance = editDistance(folded(key), folded(candidate));
        if (distance <= std::max<std::size_t>(2, folded(candidate).size() / 3) &&
            (nearest.empty() || distance < best)) {
            nearest = std::string(candidate);
            best = distance;
        }
    }
    return nearest;
}

template <std::size_t N>
std::string listed(const std::array<std::string_view, N>& known) {
    std::string text;
    for (std::size_t i = 0; i < N; ++i) {
        text += (i == 0 ? "" : i + 1 == N ? " or " : ", ") + inQuotes(known[i]);
    }
    return text;
}

std::string kindName(ServiceType kind) {
    return std::string(kServiceTexts.at(static_cast<std::size_t>(kind)));
}

bool isOutput(ServiceType kind) {
    return kind == DigitalOut || kind == AnalogOut;
}

bool isAnalog(ServiceType kind) {
    return kind == AnalogIn || kind == AnalogOut;
}

// The pin state that writeDigital leaves for a byte that is not 0 or 1: the byte is not
// normalised, the pin takes its bit of the byte's two's-complement negation.
bool digitalWriteSetsPin(uint8_t byte, int pin) {
    return (((0U - byte) >> pin) & 1U) != 0;
}

class DriverCheck {
public:
    DriverCheck(const Config& config, int index, std::vector<Finding>& findings)
        : config_(config),
          index_(index),
          driver_(config.drivers[static_cast<std::size_t>(index)]),
          model_(modelOf(driver_.deviceType)),
          findings_(findings) {}

    void run() {
        checkCreation();
        checkDeviceType();
        for (const auto& [key, service] : driver_.services) {
            checkService(key, service);
        }
        checkRestartIds();
        checkEvents();
    }

private:
    Finding& add(Effect effect, std::optional<unsigned> key, std::string where,
                 std::string problem) {
        Finding finding;
        finding.driver = index_;
        finding.serviceKey = key;
        finding.effect = effect;
        finding.where = std::move(where);
        finding.problem = std::move(problem);
        findings_.push_back(std::move(finding));
        return findings_.back();
    }

    Finding& addStop(std::optional<unsigned> key, std::string where, std::string problem,
                     std::string message, std::optional<uint32_t> eventId) {
        Finding& finding = add(Effect::Stops, key, std::move(where), std::move(problem));
        finding.stopMessage = std::move(message);
        finding.stopEventId = eventId;
        return finding;
    }

    // A number setting: the exception when the driver's conversion throws, or the value it
    // takes when that is not what the text shows. The reading, when there is a value.
    std::optional<DriverNumber> checkNumber(std::optional<unsigned> key, const std::string& where,
                                            const std::map<std::string, std::string>& params,
                                            const std::string& name, const std::string& example) {
        const auto it = params.find(name);
        const DriverNumber number = DriverNumber::read(it != params.end() ? it->second : "");
        if (number.throws()) {
            Finding& finding =
                add(Effect::Throws, key, where,
                    it == params.end() ? inQuotes(name) + " is missing"
                                       : inQuotes(name) + " is " + shortInQuotes(it->second) +
                                             ", which the driver cannot read as a number");
            finding.exception = number.exception();
            finding.fix =
                "write " + inQuotes(name) + " as a decimal number, e.g. " + inQuotes(example);
            return std::nullopt;
        }
        if (!number.readsAsWritten()) {
            const std::string value = std::to_string(number.value());
            Finding& finding = add(Effect::Differs, key, where,
                                   inQuotes(name) + " is " + shortInQuotes(number.text()));
            finding.consequence = "reads it as " + value +
                                  ": it stops reading at the first character that is not a "
                                  "decimal digit";
            finding.fix = "write " + inQuotes(value) + " if " + value +
                          " is meant; the driver reads only whole decimal numbers";
        }
        return number;
    }

    void checkCreation() {
        checkKeys(std::nullopt, "create", driver_.params, {kConsecutiveNumber}, "");
        position_ = checkNumber(std::nullopt, "create", driver_.params,
                                std::string(kConsecutiveNumber), "1");
    }

    // Keys the driver never reads: a misspelt key leaves the setting it was meant for unset.
    void checkKeys(std::optional<unsigned> key, const std::string& where,
                   const std::map<std::string, std::string>& params,
                   const std::vector<std::string_view>& known, const std::string& kind) {
        for (const auto& [name, value] : params) {
            if (std::find(known.begin(), known.end(), name) != known.end()) {
                continue;
            }
            const std::string nearest = nearestKey(name, known);
            std::string reads = "it reads none";
            for (std::size_t i = 0; i < known.size(); ++i) {
                reads = (i == 0 ? "it reads " : reads + " and ") + std::string(known[i]);
            }
            // Renaming into a key that is there already would make a key given twice.
            const bool given = !nearest.empty() && params.count(nearest) != 0;
            std::string problem = shortText(name) + ": not a key the driver reads";
            if (nearest.empty()) {
                problem += (kind.empty() ? "" : " for a " + kind + " service") + " (" + reads + ")";
            } else if (given) {
                problem += "; " + nearest + ", which it reads, is given already";
            } else {
                problem += "; did you mean " + nearest + "?";
            }
            Finding& finding = add(Effect::Differs, key, where, problem);
            finding.consequence = "never reads it, so it has no effect";
            finding.fix = nearest.empty() || given ? "remove it" : "rename it to " + nearest;
        }
    }

    void checkDeviceType() {
        if (model_ == nullptr) {
            const std::string problem = "\"deviceType\" is " + shortInQuotes(driver_.deviceType) +
                                        ", which names no module the driver knows";
            std::string fix = "use " + listed(kDeviceTypes);
            if (const std::string known = meant(driver_.deviceType, kDeviceTypes); !known.empty()) {
                fix =
                    "write " + inQuotes(known) + " exactly (the driver compares the text exactly)";
            }
            if (driver_.services.empty()) {
                Finding& finding = add(Effect::Differs, std::nullopt, "initialize", problem);
                finding.consequence = "starts without a module and serves nothing";
                finding.fix = fix;
            } else {
                const auto& [key, first] = *driver_.services.begin();
                Finding& finding = addStop(key, "initialize", problem, kUnsupported, first.eventId);
                finding.fix = fix;
            }
            return;
        }
        if (!position_) {
            return;
        }
        checkPosition(position_->value());
    }

    void checkPosition(int position) {
        const int busLength = static_cast<int>(config_.bus.size());
        std::string problem;
        if (position < 1 || position > busLength) {
            problem = "\"Consecutive Number\" is " + std::to_string(position) +
                      ", but the bus has modules at positions 1 to " + std::to_string(busLength);
        } else if (const ModuleModel& there =
                       modelOf(config_.bus[static_cast<std::size_t>(position - 1)]);
                   there.module != model_->module) {
            problem = "position " + std::to_string(position) + " of the bus holds " +
                      std::string(there.deviceType) + ", not " + std::string(model_->deviceType);
        }
        if (!problem.empty()) {
            const std::string prefix =
                "Arp.Io.AxlC/" + std::to_string(int64_t{position} - 1) + ".~";
            Finding& finding = add(Effect::Differs, std::nullopt, "initialize", problem);
            finding.consequence = "logs \"Can't get offset to port: %s\" for " + prefix +
                                  std::string(model_->inPort) + " and " + prefix +
                                  std::string(model_->outPort) +
                                  "; its inputs then read 0 and its outputs reach no module";
            finding.fix = "set \"Consecutive Number\" to the position of the driver's " +
                          std::string(model_->deviceType) + " on the bus, or change \"bus\"";
            return;
        }
        for (int other = 0; other < index_; ++other) {
            const Config::Driver& driver = config_.drivers[static_cast<std::size_t>(other)];
            const auto it = driver.params.find("Consecutive Number");
            const DriverNumber number =
                DriverNumber::read(it != driver.params.end() ? it->second : "");
            if (!number.throws() && number.value() == position &&
                modelOf(driver.deviceType) == model_) {
                Finding& finding = add(Effect::Differs, std::nullopt, "initialize",
                                       "driver " + std::to_string(other) + " serves position " +
                                           std::to_string(position) + " as well");
                finding.consequence =
                    "writes the same module's outputs as the other driver, each "
                    "from its own copy of them";
                finding.fix = "give each module on the bus one driver";
                return;
            }
        }
    }

    void checkService(unsigned key, const Config::Service& service) {
        const ServiceType kind = serviceTypeOf(service.type);
        if (kind == Unsupported) {
            Finding& finding = addStop(
                key, "initialize",
                "\"type\" is " + shortInQuotes(service.type) + ", which is not a service text",
                kUnsupported, service.eventId);
            const std::string known = meant(service.type, kServiceTexts);
            finding.fix = known.empty() ? "use one of " + listed(kServiceTexts)
                                        : "write " + inQuotes(known) +
                                              " exactly (the driver compares the text exactly)";
            return;
        }
        if (model_ != nullptr && !model_->supports(kind)) {
            Finding& finding = addStop(
                key, "initialize",
                std::string(model_->deviceType) + " offers no " + kindName(kind) + " service",
                kUnsupported, service.eventId);
            finding.fix = std::string(model_->deviceType) + " offers " + kindName(model_->input) +
                          ", " + kindName(model_->output) + " and RestartDevice; " +
                          kindName(kind) + " needs a driver of " +
                          std::string(kind == AnalogIn || kind == AnalogOut ? kDeviceTypes[1]
                                                                            : kDeviceTypes[0]);
            return;
        }
        checkKeys(key, "initialize", service.params,
                  kind == RestartDevice ? std::vector<std::string_view>{}
                  : isOutput(kind)      ? std::vector<std::string_view>{kPinNum, kInitVal}
                                        : std::vector<std::string_view>{kPinNum},
                  kindName(kind));
        checkMapping(key, service, kind);
        if (kind == RestartDevice) {
            restartIds_.emplace_back(key, service.eventId);
            return;
        }
        const auto pin = checkNumber(key, "initialize", service.params, std::string(kPinNum), "0");
        std::optional<DriverNumber> initial;
        if (isOutput(kind)) {
            initial = checkNumber(key, "initialize", service.params, std::string(kInitVal), "0");
        }
        if (!pin || model_ == nullptr) {
            return;
        }
        if (!claimPin(key, service, kind, pin->value())) {
            return;
        }
        if (isOutput(kind)) {
            outputs_[service.eventId].push_back({kind, pin->value()});
            if (initial) {
                checkInitialValue(key, kind, pin->value(), initial->value());
            }
        }
    }

    bool claimPin(unsigned key, const Config::Service& service, ServiceType kind, int pin) {
        const Refusal refusal = refusalFor(kind);
        // The module takes the pin as unsigned, so a negative pin is never available.
        if (static_cast<unsigned>(pin) >= static_cast<unsigned>(model_->pins)) {
            Finding& finding = addStop(key, "initialize",
                                       "\"PinNum\" is " + std::to_string(pin) + ", but " +
                                           std::string(model_->deviceType) + " has " +
                                           kindName(kind) + " pins " + model_->range,
                                       refusal.notAvailable, service.eventId);
            finding.log = orbel::logLineOf(refusal.notAvailableFormat, pin, model_->range);
            finding.fix = "use a pin from 0 to " + std::to_string(model_->pins - 1);
            return false;
        }
        const auto [user, added] = taken_.try_emplace({kind, pin}, key);
        if (!added) {
            Finding& finding =
                addStop(key, "initialize",
                        kindName(kind) + " pin " + std::to_string(pin) +
                            " is already used by service " + std::to_string(user->second),
                        refusal.inUse, service.eventId);
            finding.log = orbel::logLineOf(refusal.inUseFormat, pin);
            finding.fix = "give each " + kindName(kind) + " service a pin of its own";
            return false;
        }
        return true;
    }

    void checkInitialValue(unsigned key, ServiceType kind, int pin, int value) {
        if (kind == DigitalOut && value != 0 && value != 1) {
            const auto byte = static_cast<uint8_t>(value);
            Finding& finding = add(Effect::Differs, key, "initialize",
                                   "\"InitVal\" is " + std::to_string(value) + ", not 0 or 1");
            finding.consequence = "writes the byte " + std::to_string(byte) +
                                  " unchanged, which switches pin " + std::to_string(pin) +
                                  (digitalWriteSetsPin(byte, pin) ? " on" : " off");
            finding.fix = "write \"0\" or \"1\"";
        }
        if (kind == AnalogOut && (value < 0 || value > 21)) {
            const unsigned short word = to_ib_il(static_cast<float>(value));
            Finding& finding = add(Effect::Differs, key, "initialize",
                                   "\"InitVal\" is " + std::to_string(value) +
                                       ", outside the range of an IB IL word (0 to 21.845)");
            finding.consequence = "sends the raw word " + std::to_string(word) +
                                  ", which stands for " + floatText(from_ib_il(word));
            finding.fix = "use a value from 0 to 21";
        }
    }

    void checkMapping(unsigned key, const Config::Service& service, ServiceType kind) {
        const auto mapping = driver_.mappings.find(service.eventId);
        const std::string id = std::to_string(service.eventId);
        const std::string wanted = isAnalog(kind) ? "4" : "1";
        const std::string addIt =
            "add \"" + id + "\": { \"size\": " + wanted + " } to \"mappings\"";
        if (mapping == driver_.mappings.end()) {
            Finding& finding =
                add(Effect::Differs, key, "initialize", "event " + id + " has no mapping");
            finding.consequence =
                kind == DigitalIn || kind == AnalogIn
                    ? "adds a mapping of size 0 for it, and publishes the input with no "
                      "payload"
                    : "never looks it up, but the host has no data block for event " + id +
                          ", so a real host cannot deliver it";
            finding.fix = addIt;
            return;
        }
        const uint16_t size = mapping->second;
        if (isAnalog(kind) && size != 4) {
            Finding& finding = add(
                Effect::Differs, key, "initialize",
                "analog event " + id + " has the mapping size " + std::to_string(size) + ", not 4");
            finding.consequence =
                kind == AnalogIn
                    ? (size < 4
                           ? "publishes only " + std::to_string(size) + " of the float's four bytes"
                           : "publishes the float followed by " + std::to_string(size - 4) +
                                 " bytes of zeros")
                    : "reads four bytes of every event, whatever its size";
            finding.fix = "give event " + id + " the size 4 (a float)";
        } else if (kind == DigitalIn && size == 0) {
            Finding& finding = add(Effect::Differs, key, "initialize",
                                   "digital event " + id + " has the mapping size 0");
            finding.consequence = "publishes the input with no payload";
            finding.fix = "give event " + id + " the size 1";
        }
    }

    void checkRestartIds() {
        for (const auto& [key, id] : restartIds_) {
            if (outputs_.count(id) == 0) {
                continue;
            }
            Finding& finding =
                add(Effect::Differs, key, "initialize",
                    "event " + std::to_string(id) + " belongs to an output service as well");
            finding.consequence = "writes the output for an event " + std::to_string(id) +
                                  " and never restarts the controller";
            finding.fix = "give the restart service an event id of its own";
        }
    }

    void checkEvents() {
        for (const Config::Step& step : config_.scenario) {
            const auto* event = std::get_if<Config::Event>(&step.action);
            if (event == nullptr || event->driver != index_) {
                continue;
            }
            const std::string id = std::to_string(event->id);
            if (!event->payload) {
                Finding& finding = addStop(std::nullopt, "event",
                                           "event " + id + " is sent with no data (null pData)",
                                           "Null data pointer", std::nullopt);
                finding.at = step.at;
                finding.fix = "send the event with a \"value\" or \"bytes\"";
                continue;
            }
            if (event->size > event->payload->size()) {
                const std::string bytes = std::to_string(event->payload->size()) +
                                          (event->payload->size() == 1 ? " byte" : " bytes");
                Finding& finding = add(Effect::Differs, std::nullopt, "event",
                                       "event " + id + " has the size " +
                                           std::to_string(event->size) + " but carries " + bytes);
                finding.at = step.at;
                finding.consequence =
                    "reads only the bytes its service takes (one, or four for a float), but a "
                    "host hands over as many bytes as the size says, so no host sends this event";
                finding.fix = "give \"size\" at most " + std::to_string(event->payload->size()) +
                              ", or give that many bytes";
            }
            const bool restarts =
                std::any_of(restartIds_.begin(), restartIds_.end(),
                            [event](const auto& r) { return r.second == event->id; });
            const auto output = outputs_.find(event->id);
            if (output == outputs_.end() && !restarts) {
                Finding& finding = addStop(std::nullopt, "event",
                                           "no output or restart service of the driver has "
                                           "event id " +
                                               id,
                                           "Unsubscribed event received", std::nullopt);
                finding.at = step.at;
                finding.fix =
                    "send only the event ids of the driver's outputs and restart "
                    "services";
                continue;
            }
            if (output == outputs_.end() || event->payload->empty()) {
                continue;
            }
            const uint8_t byte = (*event->payload)[0];
            for (const auto& [kind, pin] : output->second) {
                if (kind != DigitalOut || byte <= 1) {
                    continue;
                }
                Finding& finding = add(Effect::Differs, std::nullopt, "event",
                                       "event " + id + " carries the byte " + std::to_string(byte) +
                                           " for a digital output");
                finding.at = step.at;
                finding.consequence = "writes it unchanged, which switches pin " +
                                      std::to_string(pin) +
                                      (digitalWriteSetsPin(byte, pin) ? " on" : " off");
                finding.fix = "send 0 or 1";
            }
        }
    }

    const Config& config_;
    int index_;
    const Config::Driver& driver_;
    const ModuleModel* model_;
    std::vector<Finding>& findings_;
    std::optional<DriverNumber> position_;
    std::map<std::pair<ServiceType, int>, unsigned> taken_;  // (kind, pin) -> service key
    std::map<uint32_t, std::vector<std::pair<ServiceType, int>>> outputs_;  // id -> (kind, pin)
    std::vector<std::pair<unsigned, uint32_t>> restartIds_;  // (service key, event id)
};

}  // namespace

std::vector<ConfigCheck::Finding> ConfigCheck::check(const Config& config) {
    std::vector<Finding> findings;
    for (std::size_t i = 0; i < config.drivers.size(); ++i) {
        DriverCheck(config, static_cast<int>(i), findings).run();
    }
    return findings;
}

std::optional<ConfigCheck::Finding> ConfigCheck::firstFailure(const std::vector<Finding>& findings,
                                                              int driver) {
    for (const Finding& finding : findings) {
        if (finding.driver == driver && finding.effect != Effect::Differs) {
            return finding;
        }
    }
    return std::nullopt;
}

}  // namespace axlsim
