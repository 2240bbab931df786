// SPDX-License-Identifier: MIT
#pragma once

#include <stdbool.h>
#include <stddef.h>

#include "Arp/Plc/AnsiC/ArpPlcExport.h"

// A frame buffer of the Global Data Space, acquired through the I/O system interface.
typedef struct TGdsBuffer TGdsBuffer;

#ifdef __cplusplus
extern "C" {
#endif

// Byte offset of the named variable within the buffer's data; false if the buffer does not hold
// it.
ARP_PLC_API bool ArpPlcGds_GetVariableOffset(TGdsBuffer* pBuffer, const char* variableName,
                                             size_t* pOffset);

// Lock the buffer for reading and hand out its data; EndRead unlocks.
ARP_PLC_API bool ArpPlcGds_BeginRead(TGdsBuffer* pBuffer, char** ppData);
ARP_PLC_API bool ArpPlcGds_EndRead(TGdsBuffer* pBuffer);

// Lock the buffer for writing and hand out its data; EndWrite unlocks.
ARP_PLC_API bool ArpPlcGds_BeginWrite(TGdsBuffer* pBuffer, char** ppData);
ARP_PLC_API bool ArpPlcGds_EndWrite(TGdsBuffer* pBuffer);

#ifdef __cplusplus
}
#endif
