// SPDX-License-Identifier: MIT
// The controller's PLC C interface: each entry point forwards to the virtual controller.

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "Arp/Plc/AnsiC/Gds/ErrorHandling.h"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "Arp/Plc/AnsiC/Io/FbIoSystem.h"
#include "vplc/AnsiCInterface.h"

extern "C" {

void ArpPlc_GetLastError(char* pBuffer, size_t bufferSize) {
    vplc::ansic::getLastError(pBuffer, bufferSize);
}

bool ArpPlcIo_GetBufferPtrByBufferID(const char* ioSystemName, const char* bufferId,
                                     TGdsBuffer** ppBuffer) {
    return vplc::ansic::getBufferPtrByBufferID(ioSystemName, bufferId, ppBuffer);
}

bool ArpPlcIo_ReleaseGdsBuffer(TGdsBuffer* pBuffer) {
    return vplc::ansic::releaseGdsBuffer(pBuffer);
}

bool ArpPlcGds_GetVariableOffset(TGdsBuffer* pBuffer, const char* variableName, size_t* pOffset) {
    return vplc::ansic::getVariableOffset(pBuffer, variableName, pOffset);
}

bool ArpPlcGds_BeginRead(TGdsBuffer* pBuffer, char** ppData) {
    return vplc::ansic::beginRead(pBuffer, ppData);
}

bool ArpPlcGds_EndRead(TGdsBuffer* pBuffer) {
    return vplc::ansic::endRead(pBuffer);
}

bool ArpPlcGds_BeginWrite(TGdsBuffer* pBuffer, char** ppData) {
    return vplc::ansic::beginWrite(pBuffer, ppData);
}

bool ArpPlcGds_EndWrite(TGdsBuffer* pBuffer) {
    return vplc::ansic::endWrite(pBuffer);
}

bool ArpPlcAxio_ReadFromAxioToGds(unsigned long timeoutMs) {
    return vplc::ansic::readFromAxioToGds(timeoutMs);
}

bool ArpPlcAxio_WriteFromGdsToAxio(unsigned long timeoutMs) {
    return vplc::ansic::writeFromGdsToAxio(timeoutMs);
}

void ArpPlcDomain_SetHandler(ArpPlcDomainHandler handler) {
    vplc::ansic::setHandler(handler);
}

}  // extern "C"
