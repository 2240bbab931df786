// SPDX-License-Identifier: MIT
#include "axlsim/check/PinCheck.h"

#include <string>

#include "orbel/LogFormat.h"

namespace axlsim::configcheck {

namespace {

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

}  // namespace

bool claimPin(DriverCheck& check, unsigned key, const Config::Service& service, ServiceType kind,
              int pin) {
    const ModuleModel& model = *check.model();
    const Refusal refusal = refusalFor(kind);
    // The module takes the pin as unsigned, so a negative pin is never available.
    if (static_cast<unsigned>(pin) >= static_cast<unsigned>(model.pins)) {
        Finding& finding = check.addStop(key, "initialize",
                                         "\"PinNum\" is " + std::to_string(pin) + ", but " +
                                             std::string(model.deviceType) + " has " +
                                             kindName(kind) + " pins " + model.range,
                                         refusal.notAvailable, service.eventId);
        finding.log = orbel::logLineOf(refusal.notAvailableFormat, pin, model.range);
        finding.fix = "use a pin from 0 to " + std::to_string(model.pins - 1);
        return false;
    }
    const auto [user, added] = check.setup().taken.try_emplace({kind, pin}, key);
    if (!added) {
        Finding& finding =
            check.addStop(key, "initialize",
                          kindName(kind) + " pin " + std::to_string(pin) +
                              " is already used by service " + std::to_string(user->second),
                          refusal.inUse, service.eventId);
        finding.log = orbel::logLineOf(refusal.inUseFormat, pin);
        finding.fix = "give each " + kindName(kind) + " service a pin of its own";
        return false;
    }
    return true;
}

}  // namespace axlsim::configcheck
