// SPDX-License-Identifier: MIT
// The module destructors' release of the GDS frame buffers.

#include <cstddef>
#include <string>
#include <vector>

#include "FaultMatrix.h"
#include "Steps.h"

using namespace faultmatrix;

namespace {

constexpr const char* kStillMapped = "buffer still mapped";

// The destructor of the driver `start` starts, with its first release (1:OUT) failing, or with
// both (1:OUT, then 1:IN).
FaultRow failedRelease(const std::string& name, const std::string& site, const Step& start,
                       int failures) {
    const bool both = failures == 2;
    return {
        .name = name,
        .fault = {kRelease, site, kStillMapped},
        .steps = {start, both ? Step(failTwice) : Step(failNext), destroy, calls(kRelease, 2)},
        .log = std::vector<LoggedLine>(static_cast<std::size_t>(failures),
                                       failure(kNoRelease, kStillMapped)),
        .notes = {"the destructor goes on; nothing is thrown",
                  "the driver is gone; the platform keeps what it could not release",
                  both ? "both kept by the platform" : "1:IN released, 1:OUT kept by the platform"},
        .buffersKept = failures};
}

}  // namespace

namespace {

std::vector<FaultRow> releaseRows() {
    return {
        failedRelease("DigitalDestructorReleaseOfOutFails",
                      "digital module destructor: buffer 1:OUT (released first)", startDigital, 1),
        failedRelease("DigitalDestructorReleaseOfOutAndInFail",
                      "digital module destructor: buffers 1:OUT and 1:IN", startDigital, 2),
        failedRelease("AnalogDestructorReleaseOfOutFails",
                      "analog module destructor: buffer 1:OUT (released first)", startAnalog, 1),
        failedRelease("AnalogDestructorReleaseOfOutAndInFail",
                      "analog module destructor: buffers 1:OUT and 1:IN", startAnalog, 2),
    };
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Release, FaultMatrix, testing::ValuesIn(releaseRows()), rowName);
