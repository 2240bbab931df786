// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "Arp/Plc/AnsiC/Gds/DataLayout.h"

// The controller's PLC C interface (libArp.Plc.AnsiC) as the virtual controller implements it;
// the C library forwards each of its functions to the one of the same name here. Every function
// is counted and can be made to fail by its C name (vplc/PlatformCalls.h), and every failure sets
// the calling thread's last error text.
namespace vplc::ansic {

void getLastError(char* pBuffer, std::size_t bufferSize);

bool getBufferPtrByBufferID(const char* ioSystemName, const char* bufferId, TGdsBuffer** ppBuffer);
bool releaseGdsBuffer(TGdsBuffer* pBuffer);

bool getVariableOffset(TGdsBuffer* pBuffer, const char* variableName, std::size_t* pOffset);

// A Begin by a thread that already holds a lock on the frame fails instead of deadlocking. An End
// by a thread that holds no lock of that kind on the frame fails and unlocks nothing; so does an
// End that fails by an injected fault: the lock then stays with the thread until its next End on
// that frame.
bool beginRead(TGdsBuffer* pBuffer, char** ppData);
bool endRead(TGdsBuffer* pBuffer);
bool beginWrite(TGdsBuffer* pBuffer, char** ppData);
bool endWrite(TGdsBuffer* pBuffer);

// The virtual bus answers at once, so a timeout never expires: 0 (no limit) and every other value
// behave alike. A copy fails, copying nothing, when the calling thread holds a lock on the frame.
bool readFromAxioToGds(unsigned long timeoutMs);
bool writeFromGdsToAxio(unsigned long timeoutMs);

void setHandler(ArpPlcDomainHandler handler);

}  // namespace vplc::ansic
