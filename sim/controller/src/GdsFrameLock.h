// SPDX-License-Identifier: MIT
#pragma once

#include "GdsFrame.h"

namespace vplc {

// Holds a frame's lock for a scope.
class GdsFrameLock {
public:
    GdsFrameLock(GdsFrame& frame, Access access) : frame_(frame), access_(access) {
        frame_.lock(access_);
    }
    ~GdsFrameLock() { frame_.unlock(access_); }
    GdsFrameLock(const GdsFrameLock&) = delete;
    GdsFrameLock& operator=(const GdsFrameLock&) = delete;

private:
    GdsFrame& frame_;
    Access access_;
};

}  // namespace vplc
