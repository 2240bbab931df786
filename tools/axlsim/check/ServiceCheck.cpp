// SPDX-License-Identifier: MIT
#include "axlsim/check/ServiceCheck.h"

#include <string>
#include <string_view>
#include <vector>

#include "axlsim/base/ValueText.h"
#include "axlsim/check/KeyCheck.h"
#include "axlsim/check/MappingCheck.h"
#include "axlsim/check/NumberCheck.h"
#include "axlsim/check/PinCheck.h"
#include "axlsim/check/Spelling.h"
#include "modules/IbIlConversion.h"

namespace axlsim::configcheck {

namespace {

void checkInitialValue(DriverCheck& check, unsigned key, ServiceType kind, int pin, int value) {
    if (kind == DigitalOut && value != 0 && value != 1) {
        const auto byte = static_cast<uint8_t>(value);
        Finding& finding = check.add(Effect::Differs, key, "initialize",
                                     "\"InitVal\" is " + std::to_string(value) + ", not 0 or 1");
        finding.consequence = "writes the byte " + std::to_string(byte) +
                              " unchanged, which switches pin " + std::to_string(pin) +
                              (digitalWriteSetsPin(byte, pin) ? " on" : " off");
        finding.fix = "write \"0\" or \"1\"";
    }
    if (kind == AnalogOut && (value < 0 || value > 21)) {
        const unsigned short word = to_ib_il(static_cast<float>(value));
        Finding& finding = check.add(Effect::Differs, key, "initialize",
                                     "\"InitVal\" is " + std::to_string(value) +
                                         ", outside the range of an IB IL word (0 to 21.845)");
        finding.consequence = "sends the raw word " + std::to_string(word) + ", which stands for " +
                              floatText(from_ib_il(word));
        finding.fix = "use a value from 0 to 21";
    }
}

}  // namespace

void checkService(DriverCheck& check, unsigned key, const Config::Service& service) {
    const ModuleModel* model = check.model();
    const ServiceType kind = serviceTypeOf(service.type);
    if (kind == Unsupported) {
        Finding& finding = check.addStop(
            key, "initialize",
            "\"type\" is " + shortInQuotes(service.type) + ", which is not a service text",
            kUnsupported, service.eventId);
        const std::string known = meant(service.type, kServiceTexts);
        finding.fix = known.empty() ? "use one of " + listed(kServiceTexts)
                                    : "write " + inQuotes(known) +
                                          " exactly (the driver compares the text exactly)";
        return;
    }
    if (model != nullptr && !model->supports(kind)) {
        Finding& finding = check.addStop(
            key, "initialize",
            std::string(model->deviceType) + " offers no " + kindName(kind) + " service",
            kUnsupported, service.eventId);
        finding.fix =
            std::string(model->deviceType) + " offers " + kindName(model->input) + ", " +
            kindName(model->output) + " and RestartDevice; " + kindName(kind) +
            " needs a driver of " +
            std::string(kind == AnalogIn || kind == AnalogOut ? kDeviceTypes[1] : kDeviceTypes[0]);
        return;
    }
    checkKeys(check, key, "initialize", service.params,
              kind == RestartDevice ? std::vector<std::string_view>{}
              : isOutput(kind)      ? std::vector<std::string_view>{kPinNum, kInitVal}
                                    : std::vector<std::string_view>{kPinNum},
              kindName(kind));
    checkMapping(check, key, service, kind);
    if (kind == RestartDevice) {
        check.setup().restartIds.emplace_back(key, service.eventId);
        return;
    }
    const auto pin =
        checkNumber(check, key, "initialize", service.params, std::string(kPinNum), "0");
    std::optional<DriverNumber> initial;
    if (isOutput(kind)) {
        initial = checkNumber(check, key, "initialize", service.params, std::string(kInitVal), "0");
    }
    if (!pin || model == nullptr) {
        return;
    }
    if (!claimPin(check, key, service, kind, pin->value())) {
        return;
    }
    if (isOutput(kind)) {
        check.setup().outputs[service.eventId].push_back({kind, pin->value()});
        if (initial) {
            checkInitialValue(check, key, kind, pin->value(), initial->value());
        }
    }
}

void checkRestartIds(DriverCheck& check) {
    for (const auto& [key, id] : check.setup().restartIds) {
        if (check.setup().outputs.count(id) == 0) {
            continue;
        }
        Finding& finding =
            check.add(Effect::Differs, key, "initialize",
                      "event " + std::to_string(id) + " belongs to an output service as well");
        finding.consequence = "writes the output for an event " + std::to_string(id) +
                              " and never restarts the controller";
        finding.fix = "give the restart service an event id of its own";
    }
}

}  // namespace axlsim::configcheck
