// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vplc/Fault.h"
#include "vplc/Frame.h"
#include "vplc/Module.h"

namespace vplc {

class Bus;

// The virtual controller's Axioline station: its bus with the modules in their places, and the GDS
// frame buffers "1:IN" and "1:OUT" of the I/O system "Arp.Io.AxlC" (not to be confused with the
// plant models of an axlsim configuration, which act on a station's terminals). A station is
// installed process-wide while it lives (at most one at a time; building a second one throws
// std::logic_error): the controller's C interface works on it, and fails with "No Axioline bus is
// running" while none is installed. Delete every driver before its station.
//
//   auto station = vplc::Station::builder().module(vplc::Module::DI8_DO8)   // position 1
//                                          .module(vplc::Module::AI2_AO2)   // position 2
//                                          .build();
//
// Each frame starts with the bus master's 2-byte status word (always 0), followed by the process
// data of every module in bus order, each module starting at an even offset; a frame ends with
// the last module's data. Analog words are stored big-endian.
//
// Positions count from 1; a position, pin or channel that the bus does not have throws
// std::out_of_range, a digital operation on an analog module (or the reverse) std::logic_error.
class Station {
public:
    class Builder {
    public:
        Builder& module(Module module);
        Station build();

    private:
        std::vector<Module> modules_;
    };

    static Builder builder();
    static Station of(std::initializer_list<Module> modules);

    Station(Station&& other) noexcept;
    Station& operator=(Station&&) = delete;
    Station(const Station&) = delete;
    ~Station();

    // --- The terminals: what the modules see on their wiring (positions count from 1).
    std::vector<Module> modules() const;
    void setDigitalInput(int position, int pin, bool on);
    void setDigitalInputs(int position, uint8_t byte);
    void setAnalogInput(int position, int channel, uint16_t raw);
    uint8_t digitalOutputsOnBus(int position) const;
    uint16_t analogOutputOnBus(int position, int channel) const;
    std::vector<uint8_t> outputsOnBus(int position) const;  // the module's output process data
    std::vector<uint8_t> inputsOnBus(int position) const;   // the module's input process data

    // Called at every ArpPlcAxio_ReadFromAxioToGds, on the calling thread, after the scan gate
    // and before the copy, with no lock of the controller held: a model of the wiring sets there
    // the inputs that depend on the moment of the copy. Set it before any driver thread starts and
    // remove it (an empty function) after every driver thread has ended: while one runs, it may be
    // calling the hook, so a change throws std::logic_error and leaves the hook as it was.
    void onInputCopy(std::function<void()> hook);

    // --- The GDS: the frames as the driver sees them. These take the frame's lock like any
    // reader or writer, so they wait while another thread holds it; on a thread that holds a lock
    // on the frame itself they use that lock (writing then needs a write lock).
    std::vector<uint8_t> frameBytes(Frame frame) const;
    std::vector<uint8_t> inputsInGds(int position) const;
    std::vector<uint8_t> outputsInGds(int position) const;
    void setFrameBytes(Frame frame, std::size_t offset, std::vector<uint8_t> bytes);
    std::optional<std::size_t> variableOffset(std::string_view variableName) const;

    // --- The platform calls, by C function name ("ArpPlcGds_BeginRead", ...). Building a station
    // resets the call counts and clears the faults; destroying it clears the faults.
    int calls(std::string_view function) const;
    void inject(std::string_view function, Fault fault);
    void clearFaults();
    void resetCounters();       // call counts, unmatchedEnds() and nestedBegins()
    int buffersHeld() const;    // acquired and not yet released
    int unmatchedEnds() const;  // End calls on a buffer that the calling thread had not locked
    int nestedBegins() const;   // Begin calls by a thread that already held a lock on the buffer
    int openLocks() const;      // Begin calls not yet followed by their End

private:
    explicit Station(std::vector<Module> modules);

    std::unique_ptr<Bus> bus_;
};

}  // namespace vplc
