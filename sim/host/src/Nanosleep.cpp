// SPDX-License-Identifier: MIT
// The library's pause points. Its nanosleep, clock_nanosleep, usleep and sleep take the place of
// the C library's for the whole process (the library comes before the C library in the lookup
// order): the C library's own usleep and sleep reach its nanosleep through internal names that
// cannot be taken over, so each is replaced on its own. Where the C library's headers redirect a
// function to a 64-bit-time symbol (32-bit targets with 64-bit time_t), the definitions below
// carry that symbol's name, so the calls of code built with those headers reach them all the
// same.
#include <errno.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include "HostExport.h"
#include "ThreadState.h"
#include "orbel/DriverThreads.h"
#include "orbel/PauseClock.h"

namespace {

constexpr long kNanosecondsPerSecond = 1'000'000'000;
constexpr long kNanosecondsPerMicrosecond = 1'000;

// The kernel's clock_nanosleep, without the C library's, which this library replaces: returns 0
// or the error number, as clock_nanosleep does. Where time_t is wider than the kernel's original
// call takes (32-bit targets with 64-bit time), the 64-bit-time call.
int kernelSleep(clockid_t clock, int flags, const timespec* request, timespec* remaining) {
#if defined(SYS_clock_nanosleep_time64) && !defined(SYS_clock_nanosleep)
    const long result = syscall(SYS_clock_nanosleep_time64, clock, flags, request, remaining);
#elif defined(SYS_clock_nanosleep_time64)
    const long result =
        syscall(sizeof(time_t) > sizeof(long) ? SYS_clock_nanosleep_time64 : SYS_clock_nanosleep,
                clock, flags, request, remaining);
#else
    const long result = syscall(SYS_clock_nanosleep, clock, flags, request, remaining);
#endif
    return result == 0 ? 0 : errno;
}

bool isValidRequest(const timespec& request) {
    return request.tv_sec >= 0 && request.tv_nsec >= 0 && request.tv_nsec < kNanosecondsPerSecond;
}

// A relative pause of a driver thread, on the host's clock when one is installed. Returns 0 or
// the error number; `remaining` as nanosleep fills it.
int pauseDriverThread(const timespec* request, timespec* remaining) {
    orbel::endIfRequested();
    orbel::PauseClock* clock = orbel::pauseClock();
    if (clock == nullptr) {
        const int error = kernelSleep(CLOCK_REALTIME, 0, request, remaining);
        orbel::endIfRequested();
        return error;
    }
    if (request == nullptr) {
        return EFAULT;
    }
    if (!isValidRequest(*request)) {
        return EINVAL;
    }
    orbel::ThreadState::current()->pause(*clock, *request);
    orbel::endIfRequested();
    return 0;
}

// A relative pause: a driver thread's (see pauseDriverThread), any other thread's in real time on
// the real-time clock, as the C library's nanosleep sleeps.
int relativePause(const timespec* request, timespec* remaining) {
    if (!orbel::isDriverThread()) {
        return kernelSleep(CLOCK_REALTIME, 0, request, remaining);
    }
    return pauseDriverThread(request, remaining);
}

int withErrno(int error) {
    if (error == 0) {
        return 0;
    }
    errno = error;
    return -1;
}

}  // namespace

// A driver thread's pause is where the host ends it: orbel::ThreadEnd is thrown from here when
// the end is requested before or during the pause.
extern "C" ORBEL_API int nanosleep(const timespec* request, timespec* remaining) {
    return withErrno(relativePause(request, remaining));
}

// Relative pauses on any clock are pauses like nanosleep's. An absolute deadline is a pause until
// that reading of the named clock, which is a real clock: on a driver thread it becomes the
// relative pause left until it, so that the host's clock runs it.
extern "C" ORBEL_API int clock_nanosleep(clockid_t clock, int flags, const timespec* request,
                                         timespec* remaining) {
    if (!orbel::isDriverThread()) {
        return kernelSleep(clock, flags, request, remaining);
    }
    if ((flags & TIMER_ABSTIME) == 0) {
        return pauseDriverThread(request, remaining);
    }
    if (request == nullptr) {
        return EFAULT;
    }
    timespec now{};
    if (clock_gettime(clock, &now) != 0) {
        return errno;
    }
    long long left =
        (static_cast<long long>(request->tv_sec) - now.tv_sec) * kNanosecondsPerSecond +
        (request->tv_nsec - now.tv_nsec);
    if (left < 0) {
        left = 0;
    }
    const timespec relative{static_cast<time_t>(left / kNanosecondsPerSecond),
                            static_cast<long>(left % kNanosecondsPerSecond)};
    return pauseDriverThread(&relative, nullptr);
}

extern "C" ORBEL_API int usleep(useconds_t microseconds) {
    const timespec request{
        static_cast<time_t>(microseconds / 1'000'000),
        static_cast<long>(microseconds % 1'000'000) * kNanosecondsPerMicrosecond};
    return withErrno(relativePause(&request, nullptr));
}

// Returns the whole seconds not slept, rounded up, as sleep does when a signal ends it early.
extern "C" ORBEL_API unsigned int sleep(unsigned int seconds) {
    const timespec request{static_cast<time_t>(seconds), 0};
    timespec remaining{};
    if (relativePause(&request, &remaining) != EINTR) {
        return 0;
    }
    return static_cast<unsigned int>(remaining.tv_sec) + (remaining.tv_nsec > 0 ? 1U : 0U);
}
