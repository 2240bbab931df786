// SPDX-License-Identifier: MIT
#pragma once

class CSI_base;

namespace orbel {

// How a host ends a driver's thread.
//
// A driver never stops its own thread, and its destructor takes its I/O module apart before the
// host's thread base is destroyed, so the host must end the thread before it deletes the driver.
// endDriverThread() asks the thread to end and waits until it has: the request is honoured at the
// thread's next pause (nanosleep) or at any other host-controlled wait point, where the library
// throws ThreadEnd on the driver thread. The exception unwinds the driver's run() (drivers catch
// nothing) and is caught where the library started the thread.

// Thrown on a driver thread to end it; never escapes the library's thread entry.
struct ThreadEnd {};

// Ends the thread that `driver` started through its CPosixThread base, and joins it. Returns at
// once if the driver has no running thread. Safe to call more than once.
void endDriverThread(const CSI_base& driver);

// Ends every driver thread of the process.
void endAllDriverThreads();

// Ends the driver's thread, then deletes the driver through its virtual destructor.
void destroyDriver(CSI_base* driver);

// On a driver thread: true once the host has asked the thread to end.
bool endRequested();

// True on a thread started through CPosixThread::start().
bool isDriverThread();

// The driver threads (or fibers) of the process that have started and not yet ended.
int runningDriverThreads();

// The driver that owns the current driver thread, or null on any other thread.
const CSI_base* currentThreadDriver();

// On a driver thread that the host has asked to end: throws ThreadEnd. Otherwise returns.
void endIfRequested();

}  // namespace orbel
