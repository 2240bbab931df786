// SPDX-License-Identifier: MIT
#pragma once

#include <setjmp.h>
#include <ucontext.h>

#include <cstddef>
#include <functional>

#include "orbel/DriverFiber.h"

namespace orbel {

class ThreadState;

// A stack of its own and the context switches to and from it, told to the address and thread
// sanitizers so that they follow the switches. The C library's ucontext makes the fiber and enters
// it the first time; after that, switches are _setjmp/_longjmp, which unlike swapcontext leave the
// signal mask alone and so make no system call: a switch costs some nanoseconds instead of a
// kernel round trip. The body must not let an exception out. Once the body has returned the stack
// is released.
class DriverFiber {
public:
    DriverFiber(ThreadState& owner, std::function<void()> body);
    ~DriverFiber();
    DriverFiber(const DriverFiber&) = delete;
    DriverFiber& operator=(const DriverFiber&) = delete;

    ThreadState& owner() const { return owner_; }
    bool finished() const { return finished_; }

    // Switches to the fiber; returns when it suspends or finishes.
    void resume();

    // On this fiber: switches back to where it was resumed.
    void suspend();

    static DriverFiber* current();

private:
    static void entry();
    void switchOut(bool finishing);
    void releaseStack();

    ThreadState& owner_;
    std::function<void()> body_;
    void* stack_ = nullptr;
    std::size_t stackSize_ = 0;
    ucontext_t context_{};
    jmp_buf inside_{};   // where the fiber suspended
    jmp_buf resumer_{};  // where it was resumed from
    DriverFiber* resumedFrom_ = nullptr;
    bool started_ = false;
    bool finished_ = false;

    // Sanitizer bookkeeping; unused in a build without sanitizers.
    void* tsanFiber_ = nullptr;      // the fiber's own ThreadSanitizer context
    void* tsanInside_ = nullptr;     // the context that was current when it last suspended
    void* tsanResumer_ = nullptr;    // the resumer's context
    void* asanFakeStack_ = nullptr;  // the resumer's fake stack while the fiber runs
    const void* resumerStackBottom_ = nullptr;
    std::size_t resumerStackSize_ = 0;
};

}  // namespace orbel
