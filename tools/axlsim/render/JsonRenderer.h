// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "axlsim/configuration/Config.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/render/TimelineRenderer.h"

namespace axlsim {

// One JSON object per line for what the driver did (logs, publications, stops, bus writes,
// restarts, exceptions) and for the scenario's own steps (inputs, events, PLC operations, notes),
// each step before what it causes, then the state at the end.
class JsonRenderer final : public TimelineRenderer {
public:
    JsonRenderer(std::ostream& out, const Config& config);

    void happening(const Happening& happening) override;
    void finish(const RunResult& result) override;
    void interrupted(std::chrono::nanoseconds at, const std::string& signal) override;

    // The object of one happening's line; none for a happening the timeline does not show.
    std::optional<nlohmann::ordered_json> line(const Happening& happening) const;

private:
    std::ostream& out_;
    const Config& config_;
    EventCatalog catalog_;
};

// A line's object as the line's text, with its time `t` written exactly.
std::string jsonLineText(const nlohmann::ordered_json& line, std::chrono::nanoseconds t);

}  // namespace axlsim
