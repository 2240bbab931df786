// SPDX-License-Identifier: MIT
#pragma once

#include <stddef.h>

#include "Arp/Plc/AnsiC/ArpPlcExport.h"

#ifdef __cplusplus
extern "C" {
#endif

// Copies the text of the last error of the PLC C interface into the buffer (at most
// bufferSize - 1 characters and a terminating NUL) and clears it.
ARP_PLC_API void ArpPlc_GetLastError(char* pBuffer, size_t bufferSize);

#ifdef __cplusplus
}
#endif
