// SPDX-License-Identifier: MIT
#include "axlsim/check/CheckReport.h"

#include <string>

#include "axlsim/base/ValueText.h"

namespace axlsim {

namespace {

using Finding = configcheck::Finding;

std::string subject(const Config::Driver& driver, const Finding& finding) {
    if (finding.serviceKey) {
        const Config::Service& service = driver.services.at(*finding.serviceKey);
        return "service " + std::to_string(*finding.serviceKey) + " (" +
               shortInQuotes(service.type) +
               (service.name.empty() ? "" : " " + shortInQuotes(service.name)) + ", event " +
               std::to_string(service.eventId) + ")";
    }
    if (finding.at) {
        return "scenario, at " + std::to_string(finding.at->count()) + " ms";
    }
    return "driver settings";
}

std::string hostCall(const std::string& where) {
    if (where == "create") {
        return "CreateSiObject";
    }
    if (where == "event") {
        return "onReceiveEvent";
    }
    return "initialize";
}

std::string driverTitle(const Config& config, int index) {
    const Config::Driver& driver = config.drivers[static_cast<std::size_t>(index)];
    std::string title = "driver " + std::to_string(index);
    if (!driver.name.empty()) {
        title += " " + shortInQuotes(driver.name);
    }
    return title + " (" + shortInQuotes(driver.deviceType) + ")";
}

}  // namespace

std::string checkreport::outcome(const Finding& finding) {
    switch (finding.effect) {
        case configcheck::Effect::Stops:
            return (finding.log.empty() ? "" : "logs " + inQuotes(finding.log) + " and ") +
                   "stops with " + inQuotes(finding.stopMessage) +
                   (finding.stopEventId ? "" : " (driver-wide)");
        case configcheck::Effect::Throws:
            return "throws " + finding.exception->type + " (" + inQuotes(finding.exception->what) +
                   ") out of " + hostCall(finding.where);
        case configcheck::Effect::Differs:
            break;
    }
    return finding.consequence;
}

void checkreport::write(std::ostream& out, const Config& config,
                        const std::vector<Finding>& findings,
                        const std::vector<loopcheck::Finding>& loop) {
    const std::size_t count = findings.size() + loop.size();
    if (count == 0) {
        out << config.file << ": no problems found\n";
        return;
    }
    out << config.file << ": " << count << (count == 1 ? " problem\n" : " problems\n");
    for (std::size_t d = 0; d < config.drivers.size(); ++d) {
        const int index = static_cast<int>(d);
        bool titled = false;
        for (const Finding& finding : findings) {
            if (finding.driver != index) {
                continue;
            }
            if (!titled) {
                out << '\n' << driverTitle(config, index) << '\n';
                titled = true;
            }
            out << "  " << subject(config.drivers[d], finding) << '\n'
                << "    problem: " << finding.problem << '\n'
                << "    driver:  " << outcome(finding) << '\n'
                << "    fix:     " << finding.fix << '\n';
        }
    }
    if (!loop.empty()) {
        out << "\nplant and host\n";
    }
    for (const loopcheck::Finding& finding : loop) {
        out << "  " << finding.path << " (" << finding.subject << ")\n"
            << "    problem: " << finding.problem << '\n'
            << "    effect:  " << finding.consequence << '\n'
            << "    fix:     " << finding.fix << '\n';
    }
    out << '\n';
    for (std::size_t d = 0; d < config.drivers.size(); ++d) {
        const auto first = configcheck::firstFailure(findings, static_cast<int>(d));
        if (!first) {
            continue;
        }
        out << driverTitle(config, static_cast<int>(d)) << " fails first in "
            << hostCall(first->where)
            << (first->serviceKey ? ", at service " + std::to_string(*first->serviceKey) : "")
            << (first->at ? ", at " + std::to_string(first->at->count()) + " ms" : "") << ": it "
            << outcome(*first) << ".\n";
    }
}

}  // namespace axlsim
