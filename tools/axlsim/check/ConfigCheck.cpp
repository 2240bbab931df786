// SPDX-License-Identifier: MIT
#include "axlsim/check/ConfigCheck.h"

#include "axlsim/check/DriverCheck.h"
#include "axlsim/check/EventCheck.h"
#include "axlsim/check/ModuleCheck.h"
#include "axlsim/check/ServiceCheck.h"

namespace axlsim::configcheck {

std::vector<Finding> check(const Config& config) {
    std::vector<Finding> findings;
    for (std::size_t i = 0; i < config.drivers.size(); ++i) {
        // In the order the driver meets them: creation, initialisation, the scenario's events.
        DriverCheck driver(config, static_cast<int>(i), findings);
        checkCreation(driver);
        checkModule(driver);
        for (const auto& [key, service] : driver.driver().services) {
            checkService(driver, key, service);
        }
        checkRestartIds(driver);
        checkEvents(driver);
    }
    return findings;
}

std::optional<Finding> firstFailure(const std::vector<Finding>& findings, int driver) {
    for (const Finding& finding : findings) {
        if (finding.driver == driver && finding.effect != Effect::Differs) {
            return finding;
        }
    }
    return std::nullopt;
}

}  // namespace axlsim::configcheck
