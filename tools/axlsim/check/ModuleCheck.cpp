// SPDX-License-Identifier: MIT
#include "axlsim/check/ModuleCheck.h"

#include <string_view>
#include <vector>

#include "axlsim/base/ValueText.h"
#include "axlsim/check/KeyCheck.h"
#include "axlsim/check/NumberCheck.h"
#include "axlsim/check/Spelling.h"

namespace axlsim::configcheck {

namespace {

void checkPosition(DriverCheck& check, int position) {
    const Config& config = check.config();
    const ModuleModel& model = *check.model();
    const int busLength = static_cast<int>(config.bus.size());
    std::string problem;
    if (position < 1 || position > busLength) {
        problem = "\"Consecutive Number\" is " + std::to_string(position) +
                  ", but the bus has modules at positions 1 to " + std::to_string(busLength);
    } else if (const ModuleModel& there =
                   modelOf(config.bus[static_cast<std::size_t>(position - 1)]);
               there.module != model.module) {
        problem = "position " + std::to_string(position) + " of the bus holds " +
                  std::string(there.deviceType) + ", not " + std::string(model.deviceType);
    }
    if (!problem.empty()) {
        const std::string prefix = "Arp.Io.AxlC/" + std::to_string(int64_t{position} - 1) + ".~";
        Finding& finding = check.add(Effect::Differs, std::nullopt, "initialize", problem);
        finding.consequence = "logs \"Can't get offset to port: %s\" for " + prefix +
                              std::string(model.inPort) + " and " + prefix +
                              std::string(model.outPort) +
                              "; its inputs then read 0 and its outputs reach no module";
        finding.fix = "set \"Consecutive Number\" to the position of the driver's " +
                      std::string(model.deviceType) + " on the bus, or change \"bus\"";
        return;
    }
    for (int other = 0; other < check.index(); ++other) {
        const Config::Driver& driver = config.drivers[static_cast<std::size_t>(other)];
        const auto it = driver.params.find("Consecutive Number");
        const DriverNumber number = DriverNumber::read(it != driver.params.end() ? it->second : "");
        if (!number.throws() && number.value() == position &&
            modelOf(driver.deviceType) == check.model()) {
            Finding& finding = check.add(Effect::Differs, std::nullopt, "initialize",
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

}  // namespace

void checkCreation(DriverCheck& check) {
    const auto& params = check.driver().params;
    checkKeys(check, std::nullopt, "create", params, {kConsecutiveNumber}, "");
    check.setup().position =
        checkNumber(check, std::nullopt, "create", params, std::string(kConsecutiveNumber), "1");
}

void checkModule(DriverCheck& check) {
    const Config::Driver& driver = check.driver();
    if (check.model() == nullptr) {
        const std::string problem = "\"deviceType\" is " + shortInQuotes(driver.deviceType) +
                                    ", which names no module the driver knows";
        std::string fix = "use " + listed(kDeviceTypes);
        if (const std::string known = meant(driver.deviceType, kDeviceTypes); !known.empty()) {
            fix = "write " + inQuotes(known) + " exactly (the driver compares the text exactly)";
        }
        if (driver.services.empty()) {
            Finding& finding = check.add(Effect::Differs, std::nullopt, "initialize", problem);
            finding.consequence = "starts without a module and serves nothing";
            finding.fix = fix;
        } else {
            const auto& [key, first] = *driver.services.begin();
            Finding& finding =
                check.addStop(key, "initialize", problem, kUnsupported, first.eventId);
            finding.fix = fix;
        }
        return;
    }
    if (!check.setup().position) {
        return;
    }
    checkPosition(check, check.setup().position->value());
}

}  // namespace axlsim::configcheck
