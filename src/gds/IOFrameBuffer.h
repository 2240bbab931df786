// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"

namespace gds {

// One frame buffer ("1:IN" or "1:OUT") of the Axioline master "Arp.Io.AxlC", held from
// construction to destruction. Platform failures are logged, never thrown.
class IOFrameBuffer {
public:
    // What offset() gives for a variable the platform cannot resolve. Such a port is never read or
    // written: a guessed offset would reach into the process data of another module.
    static constexpr int InvalidOffset = -1;

    explicit IOFrameBuffer(const std::string& bufferId);
    ~IOFrameBuffer();

    IOFrameBuffer(const IOFrameBuffer&) = delete;
    IOFrameBuffer& operator=(const IOFrameBuffer&) = delete;

    // Byte offset of the named GDS variable in this buffer, or InvalidOffset.
    int offset(const std::string& variableName);

    // Byte offset of `port` of the module at the one-based position `moduleNumber` on the bus.
    int offset(int moduleNumber, const std::string& port);

    // The GDS variable name of `port` of the module at the one-based position `moduleNumber`,
    // such as "Arp.Io.AxlC/0.~DI8" for module 1.
    static std::string variableName(int moduleNumber, const std::string& port);

    // Copies nSize bytes at nOffset of the buffer's data to pTarget under the platform's read
    // lock. On any failure, and for InvalidOffset, pTarget is zero-filled.
    void read(int nOffset, unsigned char* pTarget, std::size_t nSize);

    // Copies nSize bytes from pSource to nOffset of the buffer's data under the platform's write
    // lock. Does nothing for InvalidOffset.
    void write(int nOffset, const unsigned char* pSource, std::size_t nSize);

private:
    // Null before acquisition, so that a failed acquisition leaves no stray handle to release.
    TGdsBuffer* m_pBuffer = nullptr;
};

}  // namespace gds

namespace axioline {

// The text of the last error of the platform's PLC C interface (empty if there is none).
std::string getLastError();

}  // namespace axioline
