// SPDX-License-Identifier: MIT
#include "PosixThread.h"

#include "ThreadRegistry.h"

// The constructor's argument has no meaning in this host; it is kept as given.
CPosixThread::CPosixThread(long nThreadArg)
    : m_nThreadArg(nThreadArg), m_pThreadState(&orbel::ThreadRegistry::instance().add(*this)) {}

CPosixThread::~CPosixThread() {
    try {
        if (auto state = orbel::ThreadRegistry::instance().remove(*this)) {
            state->endForDestruction();
        }
    } catch (...) {
    }
}

void CPosixThread::start() {
    static_cast<orbel::ThreadState*>(m_pThreadState)->start();
}

void CPosixThread::join() {
    static_cast<orbel::ThreadState*>(m_pThreadState)->join();
}
