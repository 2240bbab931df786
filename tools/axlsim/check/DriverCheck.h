// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ServiceType.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/check/ModuleModel.h"
#include "axlsim/configuration/Config.h"
#include "axlsim/configuration/DriverNumber.h"

namespace axlsim::configcheck {

// One driver's check under way: the driver and its module, the findings so far (of every
// driver, in the order the drivers meet them), and what the checks of its creation and services
// found set up, for the checks that follow.
class DriverCheck {
public:
    // What the driver has set up so far.
    struct Setup {
        std::optional<DriverNumber> position;                   // "Consecutive Number"
        std::map<std::pair<ServiceType, int>, unsigned> taken;  // (kind, pin) -> service key
        std::map<uint32_t, std::vector<std::pair<ServiceType, int>>> outputs;  // id -> (kind, pin)
        std::vector<std::pair<unsigned, uint32_t>> restartIds;  // (service key, event id)
    };

    DriverCheck(const Config& config, int index, std::vector<Finding>& findings);

    const Config& config() const { return config_; }
    int index() const { return index_; }
    const Config::Driver& driver() const { return driver_; }
    // The module of the driver's "deviceType"; null for a type the driver does not know.
    const ModuleModel* model() const { return model_; }

    Setup& setup() { return setup_; }

    Finding& add(Effect effect, std::optional<unsigned> key, std::string where,
                 std::string problem);
    Finding& addStop(std::optional<unsigned> key, std::string where, std::string problem,
                     std::string message, std::optional<uint32_t> eventId);

private:
    const Config& config_;
    int index_;
    const Config::Driver& driver_;
    const ModuleModel* model_;
    std::vector<Finding>& findings_;
    Setup setup_;
};

}  // namespace axlsim::configcheck
