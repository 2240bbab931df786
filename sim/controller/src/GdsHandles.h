// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include "TGdsBuffer.h"
#include "vplc/Frame.h"

namespace vplc {

// Every handle ever handed out. Handles are never freed, so that a handle used after its release,
// or after its bus has gone, is still an object the controller recognises and refuses. Handed
// out under the controller's exclusive lock, looked up under its shared lock.
class GdsHandles {
public:
    TGdsBuffer* issue(std::uint64_t busSerial, Frame frame);

    // The handle, or null for a pointer that this controller never handed out.
    TGdsBuffer* find(const TGdsBuffer* handle) const;

private:
    std::unordered_map<const TGdsBuffer*, std::unique_ptr<TGdsBuffer>> issued_;
};

}  // namespace vplc
