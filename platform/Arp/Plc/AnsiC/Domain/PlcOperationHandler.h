// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/Plc/AnsiC/ArpPlcExport.h"

// Operations the PLC runtime reports to a registered handler.
typedef enum PlcOperation {
    PlcOperation_None = 0,
    PlcOperation_Load = 1,
    PlcOperation_Setup = 2,
    PlcOperation_StartCold = 3,
    PlcOperation_StartWarm = 4,
    PlcOperation_StartHot = 5,
    PlcOperation_Stop = 6,
    PlcOperation_Reset = 7,
    PlcOperation_Unload = 8,
} PlcOperation;

typedef void (*ArpPlcDomainHandler)(PlcOperation operation);

#ifdef __cplusplus
extern "C" {
#endif

// Registers the handler that the runtime calls on every PLC operation.
ARP_PLC_API void ArpPlcDomain_SetHandler(ArpPlcDomainHandler handler);

#ifdef __cplusplus
}
#endif
