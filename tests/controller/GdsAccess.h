// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Arp/Plc/AnsiC/Gds/ErrorHandling.h"
#include "Arp/Plc/AnsiC/Io/FbIoSystem.h"

namespace controllertest {

// The calling thread's last error text, as a driver reads it (and so clears it).
inline std::string lastError() {
    char text[1024] = {};
    ArpPlc_GetLastError(text, sizeof text);
    return text;
}

// Acquires a frame buffer of the Axioline master; null if that fails.
inline TGdsBuffer* acquire(const char* bufferId) {
    TGdsBuffer* handle = nullptr;
    if (!ArpPlcIo_GetBufferPtrByBufferID("Arp.Io.AxlC", bufferId, &handle)) {
        return nullptr;
    }
    return handle;
}

}  // namespace controllertest
