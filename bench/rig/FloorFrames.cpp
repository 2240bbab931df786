// SPDX-License-Identifier: MIT
#include "FloorFrames.h"

#include <stdexcept>

#include "Arp/Plc/AnsiC/Io/FbIoSystem.h"
#include "gds/IOFrameBuffer.h"

namespace axlbench {

namespace {

constexpr const char* kIoSystem = "Arp.Io.AxlC";
constexpr int kModulePosition = 1;

TGdsBuffer* acquire(const char* bufferId) {
    TGdsBuffer* buffer = nullptr;
    if (!ArpPlcIo_GetBufferPtrByBufferID(kIoSystem, bufferId, &buffer)) {
        throw std::runtime_error(std::string("cannot acquire the GDS buffer ") + bufferId);
    }
    return buffer;
}

}  // namespace

void FloorFrames::Release::operator()(TGdsBuffer* buffer) const {
    ArpPlcIo_ReleaseGdsBuffer(buffer);
}

FloorFrames::FloorFrames() : in_(acquire("1:IN")), out_(acquire("1:OUT")) {}

std::size_t FloorFrames::inputOffset(const std::string& port) const {
    return offsetIn(in_.get(), port);
}

std::size_t FloorFrames::outputOffset(const std::string& port) const {
    return offsetIn(out_.get(), port);
}

std::size_t FloorFrames::offsetIn(TGdsBuffer* buffer, const std::string& port) {
    const std::string name = gds::IOFrameBuffer::variableName(kModulePosition, port);
    std::size_t offset = 0;
    if (!ArpPlcGds_GetVariableOffset(buffer, name.c_str(), &offset)) {
        throw std::runtime_error("no GDS variable " + name);
    }
    return offset;
}

}  // namespace axlbench
