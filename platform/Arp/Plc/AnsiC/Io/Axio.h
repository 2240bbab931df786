// SPDX-License-Identifier: MIT
#pragma once

#include <stdbool.h>

#include "Arp/Plc/AnsiC/ArpPlcExport.h"

#ifdef __cplusplus
extern "C" {
#endif

// Copies the input data of the Axioline bus into the GDS input frame. A timeout of 0 waits
// without limit.
ARP_PLC_API bool ArpPlcAxio_ReadFromAxioToGds(unsigned long timeoutMs);

// Copies the GDS output frame to the outputs of the Axioline bus. A timeout of 0 waits without
// limit.
ARP_PLC_API bool ArpPlcAxio_WriteFromGdsToAxio(unsigned long timeoutMs);

#ifdef __cplusplus
}
#endif
