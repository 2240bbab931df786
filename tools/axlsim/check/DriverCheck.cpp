// SPDX-License-Identifier: MIT
#include "axlsim/check/DriverCheck.h"

namespace axlsim::configcheck {

DriverCheck::DriverCheck(const Config& config, int index, std::vector<Finding>& findings)
    : config_(config),
      index_(index),
      driver_(config.drivers[static_cast<std::size_t>(index)]),
      model_(modelOf(driver_.deviceType)),
      findings_(findings) {}

Finding& DriverCheck::add(Effect effect, std::optional<unsigned> key, std::string where,
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

Finding& DriverCheck::addStop(std::optional<unsigned> key, std::string where, std::string problem,
                              std::string message, std::optional<uint32_t> eventId) {
    Finding& finding = add(Effect::Stops, key, std::move(where), std::move(problem));
    finding.stopMessage = std::move(message);
    finding.stopEventId = eventId;
    return finding;
}

}  // namespace axlsim::configcheck
