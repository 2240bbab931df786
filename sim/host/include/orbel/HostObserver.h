// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "HostRecords.h"

class CSI_base;

namespace orbel {

// Sees everything drivers do through the host library. `driver` identifies the driver object
// (it is never dereferenced by the library); it is null for a log line that cannot be attributed
// to a driver. Callbacks may arrive on any thread, one at a time. Every callback does nothing
// unless overridden, so that an observer shows only what it reacts to.
class HostObserver {
public:
    virtual ~HostObserver() = default;

    virtual void logged(const CSI_base* /*driver*/, int /*level*/, std::string_view /*format*/,
                        std::string_view /*text*/) {}

    // `payload` holds the first nSize bytes of the event's data (empty for a null pData).
    virtual void published(const CSI_base* /*driver*/, uint32_t /*id*/, uint32_t /*size*/,
                           std::span<const uint8_t> /*payload*/) {}

    // `service` is null for the driver-wide overload.
    virtual void stopped(const CSI_base* /*driver*/, const stServiceParams_t* /*service*/,
                         std::string_view /*message*/) {}

    virtual void threadStarted(const CSI_base* /*driver*/) {}

    // A driver thread has ended: `how` says why (kThreadEndedByHost, kThreadRunReturned, or an
    // exception's text).
    virtual void threadEnded(const CSI_base* /*driver*/, std::string_view /*how*/) {}
};

// How a driver thread ended when no exception ended it.
inline constexpr std::string_view kThreadEndedByHost = "ended by the host";
inline constexpr std::string_view kThreadRunReturned = "run() returned";

// The level of the log lines that the host library writes about drivers itself (drivers use 2
// and 4).
inline constexpr int kHostWarningLevel = 3;

// Registers an observer; it must outlive its registration. With no observer registered the
// library writes readable lines to standard error. Callbacks must not add or remove observers
// (std::logic_error) nor end driver threads; a log line written from a callback goes to standard
// error.
void addObserver(HostObserver& observer);
void removeObserver(HostObserver& observer);

}  // namespace orbel
