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
        {.name = "DigitalDestructorReleaseOfOutFails",
         .fault = {kRelease, "digital module destructor: buffer 1:OUT (released first)",
                   "buffer still mapped"},
         .steps = {startDigital, failNext, destroy, calls(kRelease, 2)},
         .log = {failure(kNoRelease, "buffer still mapped")},
         .cells = {neutral, next, "1:IN released, 1:OUT kept by the platform"},
         .buffersKept = 1},
        {.name = "DigitalDestructorReleaseOfOutAndInFail",
         .fault = {kRelease, "digital module destructor: buffers 1:OUT and 1:IN",
                   "buffer still mapped"},
         .steps = {startDigital, failTwice, destroy, calls(kRelease, 2)},
         .log = {failure(kNoRelease, "buffer still mapped"),
                 failure(kNoRelease, "buffer still mapped")},
         .cells = {neutral, next, "both kept by the platform"},
         .buffersKept = 2},
        {.name = "AnalogDestructorReleaseOfOutFails",
         .fault = {kRelease, "analog module destructor: buffer 1:OUT (released first)",
                   "buffer still mapped"},
         .steps = {startAnalog, failNext, destroy, calls(kRelease, 2)},
         .log = {failure(kNoRelease, "buffer still mapped")},
         .cells = {neutral, next, "1:IN released, 1:OUT kept by the platform"},
         .buffersKept = 1},
        {.name = "AnalogDestructorReleaseOfOutAndInFail",
         .fault = {kRelease, "analog module destructor: buffers 1:OUT and 1:IN",
                   "buffer still mapped"},
         .steps = {startAnalog, failTwice, destroy, calls(kRelease, 2)},
         .log = {failure(kNoRelease, "buffer still mapped"),
                 failure(kNoRelease, "buffer still mapped")},
         .cells = {neutral, next, "both kept by the platform"},
         .buffersKept = 2},

    };
}

}  // namespace

FAULT_MATRIX_ROWS(Release, releaseRows())
