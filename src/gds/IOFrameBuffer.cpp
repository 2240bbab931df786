// SPDX-License-Identifier: MIT
#include "gds/IOFrameBuffer.h"

#include <cstdio>
#include <cstring>

#include "Arp/Plc/AnsiC/Gds/ErrorHandling.h"
#include "Arp/Plc/AnsiC/Io/FbIoSystem.h"
#include "LogMessage.h"

namespace {

const char* const szIoSystemName = "Arp.Io.AxlC";

}  // namespace

namespace gds {

IOFrameBuffer::IOFrameBuffer(const std::string& bufferId) {
    if (!ArpPlcIo_GetBufferPtrByBufferID(szIoSystemName, bufferId.c_str(), &m_pBuffer)) {
        logMessage(2, "Failed to get pointer to gds buffer: %s", axioline::getLastError().c_str());
    }
}

IOFrameBuffer::~IOFrameBuffer() {
    if (!ArpPlcIo_ReleaseGdsBuffer(m_pBuffer)) {
        logMessage(2, "Can't release buffer: %s", axioline::getLastError().c_str());
    }
}

int IOFrameBuffer::offset(const std::string& variableName) {
    size_t nOffset = 0;
    if (!ArpPlcGds_GetVariableOffset(m_pBuffer, variableName.c_str(), &nOffset)) {
        logMessage(2, "Can't get offset to port: %s", axioline::getLastError().c_str());
        return InvalidOffset;
    }
    return static_cast<int>(nOffset);
}

int IOFrameBuffer::offset(int moduleNumber, const std::string& port) {
    return offset(variableName(moduleNumber, port));
}

std::string IOFrameBuffer::variableName(int moduleNumber, const std::string& port) {
    // Widened before subtracting: the lowest int minus one would overflow, and the name must be
    // the same on every processor.
    char szPosition[16] = {};
    std::snprintf(szPosition, sizeof szPosition, "%lld", static_cast<long long>(moduleNumber) - 1);
    return std::string(szIoSystemName) + "/" + szPosition + ".~" + port;
}

// The target is zero-filled only where nothing is read: this runs for every pin of every scan.
void IOFrameBuffer::read(int nOffset, unsigned char* pTarget, std::size_t nSize) {
    if (nOffset == InvalidOffset) {
        std::memset(pTarget, 0, nSize);
        return;
    }
    char* pData = nullptr;
    if (!ArpPlcGds_BeginRead(m_pBuffer, &pData)) {
        std::memset(pTarget, 0, nSize);
        logMessage(2, "Can't begin read: %s", axioline::getLastError().c_str());
        ArpPlcGds_EndRead(m_pBuffer);
        return;
    }
    std::memcpy(pTarget, pData + nOffset, nSize);
    if (!ArpPlcGds_EndRead(m_pBuffer)) {
        logMessage(2, "Can't unlock buffer: %s", axioline::getLastError().c_str());
    }
}

void IOFrameBuffer::write(int nOffset, const unsigned char* pSource, std::size_t nSize) {
    if (nOffset == InvalidOffset) {
        return;
    }
    char* pData = nullptr;
    if (!ArpPlcGds_BeginWrite(m_pBuffer, &pData)) {
        logMessage(2, "Can't begin write: %s", axioline::getLastError().c_str());
        ArpPlcGds_EndWrite(m_pBuffer);
        return;
    }
    std::memcpy(pData + nOffset, pSource, nSize);
    if (!ArpPlcGds_EndWrite(m_pBuffer)) {
        logMessage(2, "Can't unlock buffer: %s", axioline::getLastError().c_str());
    }
}

}  // namespace gds

namespace axioline {

std::string getLastError() {
    char szError[1024] = {};
    ArpPlc_GetLastError(szError, sizeof szError);
    szError[sizeof szError - 1] = '\0';
    return szError;
}

}  // namespace axioline
