// SPDX-License-Identifier: MIT
// The module destructors' release of the GDS frame buffers.

#include <string>
#include <vector>

#include "FaultRowTest.h"

using namespace faultmatrix;

namespace {

std::vector<FaultRow> releaseRows() {
    const std::string neutral = "the destructor goes on; nothing is thrown";
    const std::string next = "the driver is gone; the platform keeps what it could not release";
    return {
        {
            .name = "DigitalDestructorReleaseOfOutFails",
            .call = kRelease,
            .site = "digital module destructor: buffer 1:OUT (released first)",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "1:IN released, 1:OUT kept by the platform",
            .next = next,
            .steps = {startDigital, failNext, destroy, calls(kRelease, 2)},
            .buffersKept = 1,
        },
        {
            .name = "DigitalDestructorReleaseOfOutAndInFail",
            .call = kRelease,
            .site = "digital module destructor: buffers 1:OUT and 1:IN",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped"),
                    failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "both kept by the platform",
            .next = next,
            .steps = {startDigital, failTwice, destroy, calls(kRelease, 2)},
            .buffersKept = 2,
        },
        {
            .name = "AnalogDestructorReleaseOfOutFails",
            .call = kRelease,
            .site = "analog module destructor: buffer 1:OUT (released first)",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "1:IN released, 1:OUT kept by the platform",
            .next = next,
            .steps = {startAnalog, failNext, destroy, calls(kRelease, 2)},
            .buffersKept = 1,
        },
        {
            .name = "AnalogDestructorReleaseOfOutAndInFail",
            .call = kRelease,
            .site = "analog module destructor: buffers 1:OUT and 1:IN",
            .error = "buffer still mapped",
            .log = {failure(kNoRelease, "buffer still mapped"),
                    failure(kNoRelease, "buffer still mapped")},
            .neutral = neutral,
            .teardown = "both kept by the platform",
            .next = next,
            .steps = {startAnalog, failTwice, destroy, calls(kRelease, 2)},
            .buffersKept = 2,
        },
    };
}

}  // namespace

FAULT_MATRIX_ROWS(Release, releaseRows())
