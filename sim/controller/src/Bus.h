// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "FrameLayout.h"
#include "GdsFrame.h"
#include "TerminalModule.h"
#include "vplc/Frame.h"
#include "vplc/Module.h"

namespace vplc {

// The state of one station: its modules, the layout and data of its GDS frames, and its counters.
// The modules' process data is changed by the station under the controller's exclusive lock and by
// the bus cycles under its shared lock and the frame's lock; the counters are atomic.
class Bus {
public:
    struct Counters {
        std::atomic<int> buffersHeld = 0;
        std::atomic<int> unmatchedEnds = 0;
        std::atomic<int> nestedBegins = 0;
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
    // Two threads may copy the OUT frame to the bus at once, each holding only the frame's read
    // lock; the bus cycle itself writes the modules' output latches one copy at a time, as the
    // controller's own bus master does.
    std::mutex busCycle_;
    std::function<void()> inputCopyHook_;
};

}  // namespace vplc
