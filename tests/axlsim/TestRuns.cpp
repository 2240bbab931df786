// SPDX-License-Identifier: MIT
#include "TestRuns.h"

#include <sstream>

#include "axlsim/configuration/ConfigReader.h"
#include "axlsim/render/JsonRenderer.h"
#include "axlsim/run/ScenarioPlayer.h"

namespace axlsimtest {

const hosting::DriverLibrary& driverLibrary() {
    static const hosting::DriverLibrary library(AXLSIM_DRIVER);
    return library;
}

axlsim::Config configFrom(const std::string& json) {
    return axlsim::configreader::readText(json, "test.json");
}

axlsim::RunResult play(const axlsim::Config& config) {
    return axlsim::scenarioplayer::run(config, driverLibrary(), {});
}

std::optional<Failure> firstFailure(const axlsim::RunResult& result, int driver) {
    std::string lastLog;
    for (const axlsim::Happening& happening : result.timeline) {
        if (happening.driver != driver) {
            continue;
        }
        if (const auto* log = std::get_if<axlsim::Happening::Log>(&happening.what)) {
            lastLog = log->text;
        }
        if (const auto* stop = std::get_if<axlsim::Happening::Stop>(&happening.what)) {
            return Failure{"", stop->message, stop->eventId, "", "", lastLog};
        }
        if (const auto* exception = std::get_if<axlsim::Happening::Exception>(&happening.what)) {
            return Failure{exception->where, "", std::nullopt, exception->type,
                           exception->what,  ""};
        }
    }
    return std::nullopt;
}

std::string jsonTimeline(const axlsim::Config& config, const axlsim::RunResult& result) {
    std::ostringstream out;
    axlsim::JsonRenderer(out, config).render(result);
    return out.str();
}

}  // namespace axlsimtest
