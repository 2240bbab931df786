// SPDX-License-Identifier: MIT
// A jump to another stack is the point of _longjmp here, not a mistake to guard against.
#undef _FORTIFY_SOURCE
#include "DriverFiber.h"

#include <sys/mman.h>
#include <unistd.h>

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

thread_local DriverFiber* runningFiber = nullptr;

std::size_t pageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

DriverFiber::DriverFiber(ThreadState& owner, std::function<void()> body)
    : owner_(owner), body_(std::move(body)) {
    // One page below the stack stays inaccessible, so that an overflow faults at once.
    const std::size_t guard = pageSize();
    void* mapping = mmap(nullptr, kStackSize + guard, PROT_READ | PROT_WRITE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED) {
        throw std::bad_alloc();
    }
    stack_ = mapping;
    stackSize_ = kStackSize + guard;
    mprotect(stack_, guard, PROT_NONE);
    if (getcontext(&context_) != 0) {
        releaseStack();
        throw std::bad_alloc();
    }
    context_.uc_stack.ss_sp = stack_;
    context_.uc_stack.ss_size = stackSize_;
    context_.uc_link = nullptr;
    makecontext(&context_, &DriverFiber::entry, 0);
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
    resumedFrom_ = runningFiber;
    runningFiber = this;
#ifdef ORBEL_ADDRESS_SANITIZER
    const std::size_t guard = pageSize();
    __sanitizer_start_switch_fiber(&asanFakeStack_, static_cast<char*>(stack_) + guard,
                                   stackSize_ - guard);
#endif
#ifdef ORBEL_FIBER_THREAD_SANITIZER
    tsanResumer_ = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(tsanInside_, 0);
#endif
    if (_setjmp(resumer_) == 0) {
        if (!started_) {
            started_ = true;
            setcontext(&context_);
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

void DriverFiber::suspend() {
    switchOut(false);
}

void DriverFiber::entry() {
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
