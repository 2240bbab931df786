// SPDX-License-Identifier: MIT
#pragma once

namespace orbel {

// A driver's run() on a stack of its own, on the thread of whoever resumes it. While a pause clock
// that runs drivers on fibers is installed (PauseClock::runsDriversOnFibers), CPosixThread::start()
// makes a fiber instead of a thread and hands it to the clock, which resumes it whenever the
// driver is due; the driver's pause gives the thread back. Nothing runs beside the host, so a
// virtual run needs no hand-over between threads and comes out the same every time.
class DriverFiber;

// The driver fiber running this code, or null on a thread's own stack.
DriverFiber* currentFiber();

// Runs `fiber` on the calling thread until it suspends itself or ends. A fiber that has ended
// is not resumed again.
void resumeFiber(DriverFiber& fiber);

// On a driver fiber: gives the thread back to where the fiber was resumed. Returns when it is
// resumed again. Never called with an exception in flight.
void suspendFiber();

}  // namespace orbel
