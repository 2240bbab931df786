// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <utility>

namespace orbel {

// A ThreadSanitizer context of its own for a stretch of a driver thread; without
// ThreadSanitizer it does nothing.
//
// ThreadSanitizer's nanosleep interceptor calls the library's nanosleep with its interceptors
// switched off for the calling context: the locks that a pause clock takes inside would go
// unseen, and a ThreadEnd thrown through that interceptor leaves them switched off for good.
// A driver thread therefore runs the driver's run() in one fiber and each clock pause in
// another, so that neither effect reaches the contexts that the thread goes on using.
class SanitizerFiber {
public:
    SanitizerFiber();

    // Calls `body` in this fiber's context and comes back to the caller's, also when it throws.
    template <class Body>
    void run(Body&& body) {
        void* caller = enter();
        try {
            std::forward<Body>(body)();
        } catch (...) {
            leave(caller);
            throw;
        }
        leave(caller);
    }

private:
    // The fiber's context: made with the fiber, destroyed with it; none without ThreadSanitizer.
    struct Destroy {
        void operator()(void* fiber) const;
    };

    void* enter();
    void leave(void* caller);

    std::unique_ptr<void, Destroy> fiber_;
};

}  // namespace orbel
