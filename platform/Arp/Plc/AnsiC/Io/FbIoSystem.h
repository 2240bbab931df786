// SPDX-License-Identifier: MIT
#pragma once

#include <stdbool.h>

#include "Arp/Plc/AnsiC/ArpPlcExport.h"
#include "Arp/Plc/AnsiC/Gds/DataLayout.h"

#ifdef __cplusplus
extern "C" {
#endif

// Acquires the frame buffer bufferId ("1:IN", "1:OUT") of the I/O system ioSystemName.
ARP_PLC_API bool ArpPlcIo_GetBufferPtrByBufferID(const char* ioSystemName, const char* bufferId,
                                                 TGdsBuffer** ppBuffer);

// Gives an acquired frame buffer back.
ARP_PLC_API bool ArpPlcIo_ReleaseGdsBuffer(TGdsBuffer* pBuffer);

#ifdef __cplusplus
}
#endif
