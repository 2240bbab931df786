// SPDX-License-Identifier: MIT
#include "FullyConfigured.h"

#include <string>

namespace axlbench {

namespace {

// Pins 6 and 7 share one event id, so their services take keys of their own.
constexpr unsigned kSharedPinKeys[] = {1006, 1007};

}  // namespace

hosting::DriverConfig fullyConfigured(ModuleKind module, int position) {
    using hosting::DriverConfig;
    if (module == ModuleKind::Analog) {
        DriverConfig config = DriverConfig::analog(position);
        for (uint32_t pin = 0; pin < 2; ++pin) {
            config.analogIn(kFirstInputId + pin, std::to_string(pin));
            config.analogOut(kFirstOutputId + pin, std::to_string(pin), "0");
        }
        return config;
    }
    DriverConfig config = DriverConfig::digital(position);
    for (uint32_t pin = 0; pin < 8; ++pin) {
        config.digitalIn(kFirstInputId + pin, std::to_string(pin));
        if (pin < 6) {
            config.digitalOut(kFirstOutputId + pin, std::to_string(pin), "0");
        }
    }
    config.mapping(kSharedOutputId, 1);
    for (uint32_t pin = 6; pin < 8; ++pin) {
        config.service(kSharedPinKeys[pin - 6], "DigitalOut", kSharedOutputId,
                       {{"PinNum", std::to_string(pin)}, {"InitVal", "0"}});
    }
    return config;
}

}  // namespace axlbench
