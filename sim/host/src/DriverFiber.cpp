// SPDX-License-Identifier: MIT
// A jump to another stack is the point of _longjmp here, not a mistake to guard against.
#undef _FORTIFY_SOURCE
#include "DriverFiber.h"

#include <sys/mman.h>
#include <unistd.h>

#include <pthread.h>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define ORBEL_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORBEL_ADDRESS_SANITIZER 1
#endif
#endif

#if defined(__SANITIZE_THREAD__)
#define ORBEL_FIBER_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORBEL_FIBER_THREAD_SANITIZER 1
#endif
#endif

#ifdef ORBEL_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>
#endif
#ifdef ORBEL_FIBER_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif

namespace orbel {

namespace {

// Room for the driver's scan and for what the host's observers do inside a publication or a log
// line, with the sanitizers' larger frames; only the pages touched are backed by memory.
constexpr std::size_t kStackSize = 512 * 1024;

// Inaccessible memory below the stack, so that an overflow faults at once: as large as the
// largest frame the driver or an observer might make, so that no frame reaches over it.
constexpr std::size_t kGuardSize = 64 * 1024;

thread_local DriverFiber* runningFiber = nullptr;

// A misuse that would go on to corrupt a stack or another fiber's state: stop here, saying why.
[[noreturn]] void refuse(const char* what) {
    std::fprintf(stderr, "orbel: driver fiber: %s\n", what);
    std::abort();
}

}  // namespace

DriverFiber::DriverFiber(ThreadState& owner, std::function<void()> body)
    : owner_(owner), body_(std::move(body)) {
    void* mapping = mmap(nullptr, kStackSize + kGuardSize, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    stack_ = mapping;
    stackSize_ = kStackSize + kGuardSize;
    if (mprotect(stack_, kGuardSize, PROT_NONE) != 0) {
        releaseStack();
        throw std::bad_alloc();
    }
#ifdef ORBEL_FIBER_THREAD_SANITIZER
    tsanFiber_ = __tsan_create_fiber(0);
    tsanInside_ = tsanFiber_;
#endif
}

DriverFiber::~DriverFiber() {
    releaseStack();
}

DriverFiber* DriverFiber::current() {
    return runningFiber;
}

void DriverFiber::resume() {
    if (finished_) {
        return;
    }
    // A fiber runs on one thread: its stack holds frames of the thread's C++ runtime and of the
    // sanitizers, which another thread must not continue.
    if (started_ && !pthread_equal(thread_, pthread_self())) {
        refuse("resumed on another thread than the one it started on");
    }
    // A fiber that is running, or is waiting for one it resumed to come back, would jump back into
    // a stack that is in use.
    for (const DriverFiber* fiber = runningFiber; fiber != nullptr; fiber = fiber->resumedFrom_) {
        if (fiber == this) {
            refuse("resumed while it is running or resuming another fiber");
        }
    }
    resumedFrom_ = runningFiber;
    resumerUncaught_ = std::uncaught_exceptions();
    resumerCaught_ = std::current_exception();
    runningFiber = this;
#ifdef ORBEL_ADDRESS_SANITIZER
    __sanitizer_start_switch_fiber(&asanFakeStack_, static_cast<char*>(stack_) + kGuardSize,
                                   stackSize_ - kGuardSize);
#endif
#ifdef ORBEL_FIBER_THREAD_SANITIZER
    tsanResumer_ = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(tsanInside_, 0);
#endif
    if (_setjmp(resumer_) == 0) {
        if (!started_) {
            started_ = true;
            thread_ = pthread_self();
            enter();
        }
        _longjmp(inside_, 1);
    }
#ifdef ORBEL_ADDRESS_SANITIZER
    __sanitizer_finish_switch_fiber(asanFakeStack_, nullptr, nullptr);
#endif
    runningFiber = resumedFrom_;
    if (finished_) {
        releaseStack();
    }
}

// The context is made here, on the thread that enters it and at that moment: setcontext restores
// the signal mask and floating-point environment that getcontext saw, which must be this
// thread's now, not those of the thread that made the fiber.
void DriverFiber::enter() {
    if (getcontext(&context_) != 0) {
        refuse("getcontext failed");
    }
    context_.uc_stack.ss_sp = stack_;
    context_.uc_stack.ss_size = stackSize_;
    context_.uc_link = nullptr;
    makecontext(&context_, &DriverFiber::entry, 0);
    setcontext(&context_);
    refuse("setcontext failed");
}

// The C++ runtime keeps the exceptions being handled, and those in flight, per thread: a fiber
// that suspended in a catch block or during unwinding would leave its exception to whatever runs
// next on the thread, and take another's back. What the resumer had when it resumed the fiber is
// the resumer's, not the fiber's.
void DriverFiber::suspend() {
    if (std::uncaught_exceptions() > resumerUncaught_) {
        refuse("suspended while an exception is in flight");
    }
    if (std::current_exception() != resumerCaught_) {
        refuse("suspended inside a catch block");
    }
    resumerCaught_ = nullptr;
    switchOut(false);
}

void DriverFiber::entry() noexcept {
    DriverFiber* self = runningFiber;
#ifdef ORBEL_ADDRESS_SANITIZER
    __sanitizer_finish_switch_fiber(nullptr, &self->resumerStackBottom_, &self->resumerStackSize_);
#endif
    self->body_();
    self->finished_ = true;
    self->switchOut(true);
}

void DriverFiber::switchOut(bool finishing) {
#ifdef ORBEL_ADDRESS_SANITIZER
    // A finishing fiber hands over no fake stack: the sanitizer releases it.
    void* fakeStack = nullptr;
    __sanitizer_start_switch_fiber(finishing ? nullptr : &fakeStack, resumerStackBottom_,
                                   resumerStackSize_);
#endif
#ifdef ORBEL_FIBER_THREAD_SANITIZER
    tsanInside_ = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(tsanResumer_, 0);
#endif
    if (finishing) {
        _longjmp(resumer_, 1);
    }
    if (_setjmp(inside_) == 0) {
        _longjmp(resumer_, 1);
    }
#ifdef ORBEL_ADDRESS_SANITIZER
    __sanitizer_finish_switch_fiber(fakeStack, &resumerStackBottom_, &resumerStackSize_);
#endif
}

void DriverFiber::releaseStack() {
    body_ = nullptr;
    if (stack_ != nullptr) {
        munmap(stack_, stackSize_);
        stack_ = nullptr;
    }
#ifdef ORBEL_FIBER_THREAD_SANITIZER
    if (tsanFiber_ != nullptr) {
        __tsan_destroy_fiber(tsanFiber_);
        tsanFiber_ = nullptr;
    }
#endif
}

DriverFiber* currentFiber() {
    return DriverFiber::current();
}

void resumeFiber(DriverFiber& fiber) {
    fiber.resume();
}

void suspendFiber() {
    if (DriverFiber* fiber = DriverFiber::current()) {
        fiber->suspend();
    }
}

}  // namespace orbel
