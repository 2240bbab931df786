// SPDX-License-Identifier: MIT
#pragma once

#include "HostExport.h"

// The host's thread wrapper. Virtual slots, in order: destructor, start, join, run.
class ORBEL_API CPosixThread {
public:
    explicit CPosixThread(long nThreadArg);
    virtual ~CPosixThread();

    // Starts a new thread that calls run() once.
    virtual void start();

    // Waits until the thread started by start() has ended.
    virtual void join();

    virtual void run() = 0;

private:
    long m_nThreadArg;
    void* m_pThreadState;  // owned by the host library
};
