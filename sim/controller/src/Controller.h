// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "CallRegistry.h"
#include "GdsHandles.h"

namespace vplc {

class Bus;
class GdsFrame;

// The process-wide state of the virtual controller: the installed bus, the GDS buffer handles,
// the platform calls' counts and faults, and the registered PLC operation handler.
//
// The driver's platform calls on its scan and event paths hold share() while they read this
// state, so that two of them neither wait for each other nor are ordered by it: what they change
// is atomic (call counts, the bus's counters), the calling thread's own (its last error, the
// frames it holds locked), or the frame's, under the frame's own lock. Everything else (a bus
// installed or removed, handles handed out or released, the station's inputs, faults, the handler)
// is changed under lock(), the exclusive lock. Only a lock of the frames' data orders two threads
// that touch one frame; nothing here orders two that touch different frames.
class Controller {
public:
    static Controller& instance();

    std::unique_lock<std::shared_mutex> lock() { return std::unique_lock(mutex_); }
    std::shared_lock<std::shared_mutex> share() { return std::shared_lock(mutex_); }

    Bus* bus() const { return bus_; }
    std::uint64_t nextBusSerial() { return ++lastBusSerial_; }

    // Installing starts the call counts afresh and clears the faults; throws std::logic_error
    // while another bus is installed.
    void install(Bus& bus);

    // Uninstalling clears the faults and retires the bus's frames; a frame that a thread still
    // holds a lock on is kept, so that neither its lock nor its data is destroyed under it.
    void uninstall(Bus& bus);

    // Counts a call of `function`. When a fault injected for it is due, consumes it, sets its text
    // as the calling thread's last error and returns the text: the call must then fail.
    std::optional<std::string> dueFault(std::string_view function);
    std::optional<std::string> dueFault(CallRegistry::Slot& slot, std::string_view function);

    CallRegistry& calls() { return calls_; }
    GdsHandles& handles() { return handles_; }

    ArpPlcDomainHandler handler() const { return handler_; }
    void setHandler(ArpPlcDomainHandler handler) { handler_ = handler; }

private:
    Controller() = default;

    std::shared_mutex mutex_;
    Bus* bus_ = nullptr;
    std::uint64_t lastBusSerial_ = 0;
    CallRegistry calls_;
    GdsHandles handles_;
    ArpPlcDomainHandler handler_ = nullptr;
    std::vector<std::shared_ptr<GdsFrame>> abandonedFrames_;
};

}  // namespace vplc
