// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"

namespace axlbench {

// The floor's own handles on the frames "1:IN" and "1:OUT" of "Arp.Io.AxlC", acquired and
// resolved through the platform's C interface as the driver's module objects do it, and released
// on destruction. Setting up is not measured; a failure throws std::runtime_error.
class FloorFrames {
public:
    FloorFrames();

    TGdsBuffer* in() const { return in_.get(); }
    TGdsBuffer* out() const { return out_.get(); }

    // Byte offsets of a port of the module at position 1.
    std::size_t inputOffset(const std::string& port) const;
    std::size_t outputOffset(const std::string& port) const;

private:
    static std::size_t offsetIn(TGdsBuffer* buffer, const std::string& port);

    struct Release {
        void operator()(TGdsBuffer* buffer) const;
    };
    using Handle = std::unique_ptr<TGdsBuffer, Release>;

    Handle in_;
    Handle out_;
};

}  // namespace axlbench
