// SPDX-License-Identifier: MIT
#include "GdsHandles.h"

namespace vplc {

TGdsBuffer* GdsHandles::issue(std::uint64_t busSerial, Frame frame) {
    auto handle = std::make_unique<TGdsBuffer>(TGdsBuffer{busSerial, frame, false});
    TGdsBuffer* issued = handle.get();
    issued_.emplace(issued, std::move(handle));
    return issued;
}

TGdsBuffer* GdsHandles::find(const TGdsBuffer* handle) const {
    auto issued = issued_.find(handle);
    return issued == issued_.end() ? nullptr : issued->second.get();
}

}  // namespace vplc
