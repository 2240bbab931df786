// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>
#include <setjmp.h>
#include <ucontext.h>

#include <cstddef>
#include <exception>
#include <functional>

#include "orbel/DriverFiber.h"

namespace orbel {

class ThreadState;

// A stack of its own, with a 64 KiB guard below it, and the context switches to and from it, told
// to the address and thread sanitizers so that they follow the switches. A fiber runs on the
// thread that first resumed it; resuming it on another thread, resuming it while it is running,
// or suspending it inside a catch block or while an exception is in flight aborts the process
// with a message. The C library's ucontext makes the fiber and enters
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
    // The body must not let an exception out: there is no frame to catch it on the fiber's stack.
    static void entry() noexcept;
    [[noreturn]] void enter();
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
    int resumerUncaught_ = 0;           // exceptions in flight where it was last resumed
    std::exception_ptr resumerCaught_;  // the exception being handled there, if any
    pthread_t thread_{};                // the thread it started on, and must always run on
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
