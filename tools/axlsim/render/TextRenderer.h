// SPDX-License-Identifier: MIT
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "axlsim/configuration/Config.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/render/TimelineRenderer.h"

namespace axlsim {

// A readable timeline: one aligned line per happening (time, what, the values decoded), with the
// scenario's steps and notes among them, in colour on a terminal.
class TextRenderer final : public TimelineRenderer {
public:
    TextRenderer(std::ostream& out, const Config& config, bool colour);

    // The title: the file, the drivers, the bus, the clock, and the configuration's description.
    void header(bool realTime);

    void happening(const Happening& happening) override;
    void finish(const RunResult& result) override;
    void interrupted(std::chrono::nanoseconds at, const std::string& signal) override;

private:
    enum class Tone { Plain, Quiet, Good, Bus, Step, Bad, Special };

    void line(const Happening& happening, const std::string& what, Tone tone,
              const std::string& details);
    void continuation(const std::string& details);
    std::string paint(Tone tone, const std::string& text) const;

    std::string describe(const Happening::Publish& publish, int driver) const;
    std::string describe(const Happening::Event& event, int driver) const;
    std::string describe(const Happening::Routed& routed, int driver) const;
    std::string describe(const Happening::Input& input) const;
    std::string describe(const Happening::PlantMove& move) const;
    std::string describeOutputs(const std::vector<std::vector<uint8_t>>& outputs,
                                bool onlyChanged) const;
    std::string moduleOutputs(int position, const std::vector<uint8_t>& data) const;

    std::ostream& out_;
    const Config& config_;
    EventCatalog catalog_;
    bool colour_;
    std::vector<std::vector<uint8_t>> lastOutputs_;
};

}  // namespace axlsim
