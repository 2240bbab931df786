// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "axlsim/serve/ModbusMap.h"

namespace axlsim {

// A Modbus TCP request as the bus server needs it: which table, which addresses, and for a write
// the values, or the exception that answers it. The map leaves addresses unused inside every
// module's block, which a contiguous table cannot express, so the addresses are checked here and
// libmodbus builds the answer, all but an exception.
struct ModbusRequest {
    // The exception codes, as Modbus numbers them.
    static constexpr int kIllegalFunction = 1;
    static constexpr int kIllegalDataAddress = 2;
    static constexpr int kIllegalDataValue = 3;

    // Reads a whole frame against the bus's map.
    static ModbusRequest read(std::span<const uint8_t> frame, const ModbusMap& map);

    int exception = 0;  // 0, or the code of the exception that answers the request
    ModbusMap::Table table = ModbusMap::Table::Coils;
    ModbusMap::Pins pins;
    bool write = false;
    std::vector<uint16_t> values;  // a write's, one per pin: 0 or 1 for a coil, else the raw word
};

// The length of the Modbus TCP frame that `bytes` start with once it is whole; 0 while more bytes
// are needed; -1 when the bytes cannot start a Modbus TCP frame.
int modbusFrameLength(std::span<const uint8_t> bytes);

// The frame that answers a whole request frame with an exception: the request's transaction and
// unit, its function code with the high bit set (a code that has it already, 0x80 and above,
// stays as sent: libmodbus would add 0x80 and wrap to another function), the code.
std::vector<uint8_t> modbusExceptionReply(std::span<const uint8_t> frame, int exception);

}  // namespace axlsim
