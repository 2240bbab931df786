// SPDX-License-Identifier: MIT
#include "axlsim/check/EventCheck.h"

#include <algorithm>
#include <string>
#include <variant>

namespace axlsim::configcheck {

void checkEvents(DriverCheck& check) {
    const auto& restartIds = check.setup().restartIds;
    const auto& outputs = check.setup().outputs;
    for (const Config::Step& step : check.config().scenario) {
        const auto* event = std::get_if<Config::Event>(&step.action);
        if (event == nullptr || event->driver != check.index()) {
            continue;
        }
        const std::string id = std::to_string(event->id);
        if (!event->payload) {
            Finding& finding = check.addStop(std::nullopt, "event",
                                             "event " + id + " is sent with no data (null pData)",
                                             "Null data pointer", std::nullopt);
            finding.at = step.at;
            finding.fix = "send the event with a \"value\" or \"bytes\"";
            continue;
        }
        if (event->size > event->payload->size()) {
            const std::string bytes = std::to_string(event->payload->size()) +
                                      (event->payload->size() == 1 ? " byte" : " bytes");
            Finding& finding = check.add(Effect::Differs, std::nullopt, "event",
                                         "event " + id + " has the size " +
                                             std::to_string(event->size) + " but carries " + bytes);
            finding.at = step.at;
            finding.consequence =
                "reads only the bytes its service takes (one, or four for a float), but a "
                "host hands over as many bytes as the size says, so no host sends this event";
            finding.fix = "give \"size\" at most " + std::to_string(event->payload->size()) +
                          ", or give that many bytes";
        }
        const bool restarts = std::any_of(restartIds.begin(), restartIds.end(),
                                          [event](const auto& r) { return r.second == event->id; });
        const auto output = outputs.find(event->id);
        if (output == outputs.end() && !restarts) {
            Finding& finding = check.addStop(std::nullopt, "event",
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
        if (output == outputs.end() || event->payload->empty()) {
            continue;
        }
        const uint8_t byte = (*event->payload)[0];
        for (const auto& [kind, pin] : output->second) {
            if (kind != DigitalOut || byte <= 1) {
                continue;
            }
            Finding& finding = check.add(Effect::Differs, std::nullopt, "event",
                                         "event " + id + " carries the byte " +
                                             std::to_string(byte) + " for a digital output");
            finding.at = step.at;
            finding.consequence = "writes it unchanged, which switches pin " + std::to_string(pin) +
                                  (digitalWriteSetsPin(byte, pin) ? " on" : " off");
            finding.fix = "send 0 or 1";
        }
    }
}

}  // namespace axlsim::configcheck
