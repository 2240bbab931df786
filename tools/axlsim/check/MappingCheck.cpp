// SPDX-License-Identifier: MIT
#include "axlsim/check/MappingCheck.h"

#include <string>

namespace axlsim::configcheck {

void checkMapping(DriverCheck& check, unsigned key, const Config::Service& service,
                  ServiceType kind) {
    const auto& mappings = check.driver().mappings;
    const auto mapping = mappings.find(service.eventId);
    const std::string id = std::to_string(service.eventId);
    const std::string wanted = isAnalog(kind) ? "4" : "1";
    const std::string addIt = "add \"" + id + "\": { \"size\": " + wanted + " } to \"mappings\"";
    if (mapping == mappings.end()) {
        Finding& finding =
            check.add(Effect::Differs, key, "initialize", "event " + id + " has no mapping");
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
        Finding& finding = check.add(
            Effect::Differs, key, "initialize",
            "analog event " + id + " has the mapping size " + std::to_string(size) + ", not 4");
        finding.consequence = kind == AnalogIn
                                  ? (size < 4 ? "publishes only " + std::to_string(size) +
                                                    " of the float's four bytes"
                                              : "publishes the float followed by " +
                                                    std::to_string(size - 4) + " bytes of zeros")
                                  : "reads four bytes of every event, whatever its size";
        finding.fix = "give event " + id + " the size 4 (a float)";
    } else if (kind == DigitalIn && size == 0) {
        Finding& finding = check.add(Effect::Differs, key, "initialize",
                                     "digital event " + id + " has the mapping size 0");
        finding.consequence = "publishes the input with no payload";
        finding.fix = "give event " + id + " the size 1";
    }
}

}  // namespace axlsim::configcheck
