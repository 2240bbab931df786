#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "FrameLayout.h"
#include "GdsFrame.h"
#include "TerminalModule.h"
#include "vplc/Frame.h"
#include "vplc/Module.h"

namespace vplc {

// The state of one plant: its modules, the layout and data of its GDS frames, and its counters.
// Apart from the frames' data, everything here is guarded by the controller's mutex.
class Bus {
public:
    struct Counters {
        int buffersHeld = 0;
        int unmatchedEnds = 0;
        int nestedBegins = 0;
    };

    Bus(const std::vector<Module>& modules, std::uint64_t serial);

    std::uint64_t serial() const { return serial_; }
    std::vector<Module> modules() const;

    // The module at `position` (from 1); throws std::out_of_range for a position off the bus.
    TerminalModule& module(int position);
    const TerminalModule& module(int position) const;

    const FrameLayout& layout() const { return layout_; }
    const std::shared_ptr<GdsFrame>& frame(Frame which) const;

    // The two bus cycles; the caller holds the frame's lock (write for the inputs, read for the
    // outputs).
    void copyInputsToGds();
    void copyGdsToOutputs();

    // Set before any driver runs and only read afterwards, so it is called without the lock.
    const std::function<void()>& inputCopyHook() const { return inputCopyHook_; }
    void setInputCopyHook(std::function<void()> hook) { inputCopyHook_ = std::move(hook); }

    Counters& counters() { return counters_; }
    const Counters& counters() const { return counters_; }
    int openLocks() const;

private:
    std::size_t indexOf(int position) const;

    std::uint64_t serial_;
    std::vector<TerminalModule> modules_;
    FrameLayout layout_;
    std::shared_ptr<GdsFrame> in_;
    std::shared_ptr<GdsFrame> out_;
    Counters counters_;
    std::function<void()> inputCopyHook_;
};

}  // namespace vplc
