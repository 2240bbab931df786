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
// libmodbus builds the answer.
struct ModbusRequest {
    // The exception codes, as Modbus numbers them.
    static constexpr int kIllegalFunction = 1;
    static constexpr int kIllegalDataAddress = 2;
    static constexpr int kIllegalDataValue = 3;

    // The length of the frame that `bytes` start with once it is whole; 0 while more bytes are
    // needed; -1 when the bytes cannot start a Modbus TCP frame.
    static int frameLength(std::span<const uint8_t> bytes);

    // Reads a whole frame against the bus's map.
    static ModbusRequest read(std::span<const uint8_t> frame, const ModbusMap& map);

    int exception = 0;  // 0, or the code of the exception that answers the request
    ModbusMap::Table table = ModbusMap::Table::Coils;
    ModbusMap::Pins pins;
    bool write = false;
    std::vector<uint16_t> values;  // a write's, one per pin: 0 or 1 for a coil, else the raw word
};

}  // namespace axlsim
