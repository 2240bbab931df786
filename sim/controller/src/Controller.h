#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
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
// the platform calls' counts and faults, and the registered PLC operation handler. One mutex
// guards all of it; hold lock() around every other member. Only the data of the GDS frames has
// locks of its own (GdsFrame).
class Controller {
public:
    static Controller& instance();

    std::unique_lock<std::mutex> lock() { return std::unique_lock(mutex_); }

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

    CallRegistry& calls() { return calls_; }
    GdsHandles& handles() { return handles_; }

    ArpPlcDomainHandler handler() const { return handler_; }
    void setHandler(ArpPlcDomainHandler handler) { handler_ = handler; }

private:
    Controller() = default;

    std::mutex mutex_;
    Bus* bus_ = nullptr;
    std::uint64_t lastBusSerial_ = 0;
    CallRegistry calls_;
    GdsHandles handles_;
    ArpPlcDomainHandler handler_ = nullptr;
    std::vector<std::shared_ptr<GdsFrame>> abandonedFrames_;
};

}  // namespace vplc
