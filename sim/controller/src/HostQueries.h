// SPDX-License-Identifier: MIT
#pragma once

// What the controller's own code asks through the hooks of vplc/HostHooks.h (kept, with the
// hooks, in HostHooks.cpp).
namespace vplc::hostQueries {

// Runs the installed scan-start hook, if any.
void scanStarting();

// The installed hook's answer, or 0 without one.
int runningDriverThreads();

}  // namespace vplc::hostQueries
