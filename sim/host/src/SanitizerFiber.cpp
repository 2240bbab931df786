// SPDX-License-Identifier: MIT
#include "SanitizerFiber.h"

#if defined(__SANITIZE_THREAD__)
#define ORBEL_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ORBEL_THREAD_SANITIZER 1
#endif
#endif

#ifdef ORBEL_THREAD_SANITIZER

#include <sanitizer/tsan_interface.h>

namespace orbel {

void SanitizerFiber::Destroy::operator()(void* fiber) const {
    __tsan_destroy_fiber(fiber);
}

SanitizerFiber::SanitizerFiber() : fiber_(__tsan_create_fiber(0)) {}

void* SanitizerFiber::enter() {
    void* caller = __tsan_get_current_fiber();
    __tsan_switch_to_fiber(fiber_.get(), 0);
    return caller;
}

void SanitizerFiber::leave(void* caller) {
    __tsan_switch_to_fiber(caller, 0);
}

}  // namespace orbel

#else

namespace orbel {

void SanitizerFiber::Destroy::operator()(void*) const {}

SanitizerFiber::SanitizerFiber() = default;

void* SanitizerFiber::enter() {
    return nullptr;
}

void SanitizerFiber::leave(void*) {}

}  // namespace orbel

#endif
