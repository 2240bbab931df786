// SPDX-License-Identifier: MIT
#pragma once

namespace vplc {

// The controller runs the calls of drivers, but knows neither the host that runs the drivers'
// threads nor the clock that paces them. What it must ask of them, it asks through these hooks,
// which the clock room (sim/clock, libvplc_clock) installs as soon as it is loaded. Without them
// (null, the default) a scan starts without a gate and no driver thread counts as running.

// Called at the start of every ArpPlcAxio_ReadFromAxioToGds on the calling thread, before the
// station's input-copy hook and before the call is counted: the virtual clock's scan gate.
using ScanStartHook = void (*)();

// How many driver threads (or fibers) have started and not yet ended; Station::onInputCopy refuses
// to change the hook while any runs.
using RunningDriverThreadsHook = int (*)();

// Each installs its hook for the whole process and returns the one it replaces. Install before
// any driver thread starts.
ScanStartHook setScanStartHook(ScanStartHook hook);
RunningDriverThreadsHook setRunningDriverThreadsHook(RunningDriverThreadsHook hook);

}  // namespace vplc
