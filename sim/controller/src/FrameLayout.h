// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TerminalModule.h"
#include "vplc/Frame.h"

namespace vplc {

// Where everything lies in the two GDS frames of a bus, and what the frames and their variables
// are called. Each frame starts with the bus master's status word; then comes each module's
// process data for that frame, in bus order, each at an even offset; the frame ends with the last
// module's data.
class FrameLayout {
public:
    static constexpr std::string_view kIoSystem = "Arp.Io.AxlC";
    static constexpr std::size_t kStatusWordSize = 2;

    static std::string_view bufferId(Frame frame);
    static std::optional<Frame> frameOf(std::string_view bufferId);

    // "Arp.Io.AxlC/" + (position - 1) + ".~" + port
    static std::string variableName(int position, std::string_view port);

    explicit FrameLayout(const std::vector<TerminalModule>& modules);

    std::size_t size(Frame frame) const;

    // Offset of the process data of the module at `position` (from 1, within the bus).
    std::size_t offset(Frame frame, int position) const;

    // Offset of a port variable of this frame; an input port is a variable of the input frame
    // only, an output port of the output frame only.
    std::optional<std::size_t> variableOffset(Frame frame, std::string_view name) const;

private:
    struct Layout {
        std::vector<std::size_t> offsets;
        std::size_t size = kStatusWordSize;
        std::map<std::string, std::size_t, std::less<>> variables;
    };

    const Layout& layout(Frame frame) const;

    Layout in_;
    Layout out_;
};

}  // namespace vplc
