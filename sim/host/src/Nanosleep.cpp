// SPDX-License-Identifier: MIT
// The library's pause point. Its nanosleep takes the place of the C library's for the whole
// process (the library comes before the C library in the lookup order). Where the C library's
// headers redirect nanosleep to a 64-bit-time symbol (32-bit targets with 64-bit time_t), the
// definition below carries that symbol's name, so the calls of code built with those headers
// reach it all the same.
#include <errno.h>
#include <time.h>

#include "HostExport.h"
#include "ThreadState.h"
#include "orbel/DriverThreads.h"
#include "orbel/PauseClock.h"

namespace {

constexpr long kNanosecondsPerSecond = 1'000'000'000;

// The C library's nanosleep: a relative sleep on the real-time clock.
int sleepRealTime(const timespec* request, timespec* remaining) {
    const int error = clock_nanosleep(CLOCK_REALTIME, 0, request, remaining);
    if (error != 0) {
        errno = error;
        return -1;
    }
    return 0;
}

bool isValidRequest(const timespec& request) {
    return request.tv_sec >= 0 && request.tv_nsec >= 0 && request.tv_nsec < kNanosecondsPerSecond;
}

}  // namespace

// A driver thread's pause is where the host ends it: orbel::ThreadEnd is thrown from here when
// the end is requested before or during the pause.
extern "C" ORBEL_API int nanosleep(const timespec* request, timespec* remaining) {
    if (!orbel::isDriverThread()) {
        return sleepRealTime(request, remaining);
    }
    orbel::endIfRequested();
    orbel::PauseClock* clock = orbel::pauseClock();
    if (clock == nullptr) {
        const int result = sleepRealTime(request, remaining);
        orbel::endIfRequested();
        return result;
    }
    if (request == nullptr) {
        errno = EFAULT;
        return -1;
    }
    if (!isValidRequest(*request)) {
        errno = EINVAL;
        return -1;
    }
    orbel::ThreadState::current()->pause(*clock, *request);
    orbel::endIfRequested();
    return 0;
}
