// SPDX-License-Identifier: MIT
#include "axlsim/serve/ModbusRequest.h"

#include <modbus/modbus.h>

#include <algorithm>
#include <array>

namespace axlsim {

namespace {

// The MBAP header: transaction id, protocol id (0), the length of what follows, the unit id.
constexpr std::size_t kHeader = 7;
constexpr std::size_t kLengthAt = 4;
constexpr int kLeastLength = 2;  // the unit id and the function code
constexpr int kMostLength = MODBUS_TCP_MAX_ADU_LENGTH - 6;
constexpr std::size_t kFunctionAt = kHeader;
constexpr std::size_t kDataAt = kHeader + 1;
constexpr uint16_t kCoilOn = 0xFF00;

uint16_t wordAt(std::span<const uint8_t> bytes, std::size_t at) {
    return static_cast<uint16_t>((bytes[at] << 8) | bytes[at + 1]);
}

ModbusRequest failed(int exception) {
    ModbusRequest request;
    request.exception = exception;
    return request;
}

struct Function {
    uint8_t code = 0;
    ModbusMap::Table table = ModbusMap::Table::Coils;
    bool write = false;
    bool single = false;  // one value in the request, instead of a quantity
    int most = 0;         // the most values one request may name
};

using Table = ModbusMap::Table;
// The functions of the four tables; every other answers "illegal function".
constexpr std::array<Function, 8> kFunctions{{
    {MODBUS_FC_READ_COILS, Table::Coils, false, false, MODBUS_MAX_READ_BITS},
    {MODBUS_FC_READ_DISCRETE_INPUTS, Table::DiscreteInputs, false, false, MODBUS_MAX_READ_BITS},
    {MODBUS_FC_READ_HOLDING_REGISTERS, Table::HoldingRegisters, false, false,
     MODBUS_MAX_READ_REGISTERS},
    {MODBUS_FC_READ_INPUT_REGISTERS, Table::InputRegisters, false, false,
     MODBUS_MAX_READ_REGISTERS},
    {MODBUS_FC_WRITE_SINGLE_COIL, Table::Coils, true, true, 1},
    {MODBUS_FC_WRITE_SINGLE_REGISTER, Table::HoldingRegisters, true, true, 1},
    {MODBUS_FC_WRITE_MULTIPLE_COILS, Table::Coils, true, false, MODBUS_MAX_WRITE_BITS},
    {MODBUS_FC_WRITE_MULTIPLE_REGISTERS, Table::HoldingRegisters, true, false,
     MODBUS_MAX_WRITE_REGISTERS},
}};

// The bytes that a write of `count` values carries after its byte count.
std::size_t valueBytes(ModbusMap::Table table, int count) {
    const auto n = static_cast<std::size_t>(count);
    return table == ModbusMap::Table::Coils ? (n + 7) / 8 : 2 * n;
}

}  // namespace

int modbusFrameLength(std::span<const uint8_t> bytes) {
    if (bytes.size() < kHeader) {
        return 0;
    }
    const int length = wordAt(bytes, kLengthAt);
    if (wordAt(bytes, 2) != 0 || length < kLeastLength || length > kMostLength) {
        return -1;
    }
    const int whole = static_cast<int>(kLengthAt) + 2 + length;
    return bytes.size() < static_cast<std::size_t>(whole) ? 0 : whole;
}

std::vector<uint8_t> modbusExceptionReply(std::span<const uint8_t> frame, int exception) {
    constexpr uint8_t kExceptionBit = 0x80;
    constexpr uint8_t kReplyLength = 3;  // the unit id, the function code, the exception code
    return {frame[0],
            frame[1],
            0,
            0,
            0,
            kReplyLength,
            frame[kHeader - 1],
            static_cast<uint8_t>(frame[kFunctionAt] | kExceptionBit),
            static_cast<uint8_t>(exception)};
}

ModbusRequest ModbusRequest::read(std::span<const uint8_t> frame, const ModbusMap& map) {
    const auto found = std::find_if(kFunctions.begin(), kFunctions.end(), [&](const Function& f) {
        return f.code == frame[kFunctionAt];
    });
    if (found == kFunctions.end()) {
        return failed(kIllegalFunction);
    }
    const Function& function = *found;
    const std::span<const uint8_t> data = frame.subspan(kDataAt);
    if (data.size() < 4) {
        return failed(kIllegalDataValue);
    }
    const int address = wordAt(data, 0);
    const int count = function.single ? 1 : wordAt(data, 2);
    if (count < 1 || count > function.most) {
        return failed(kIllegalDataValue);
    }
    std::span<const uint8_t> values;
    if (function.single) {
        if (data.size() != 4) {
            return failed(kIllegalDataValue);
        }
        values = data.subspan(2);
        if (function.table == ModbusMap::Table::Coils && wordAt(values, 0) != kCoilOn &&
            wordAt(values, 0) != 0) {
            return failed(kIllegalDataValue);
        }
    } else if (function.write) {
        const std::size_t bytes = valueBytes(function.table, count);
        if (data.size() < 5 || data[4] != bytes || data.size() != 5 + bytes) {
            return failed(kIllegalDataValue);
        }
        values = data.subspan(5);
    } else if (data.size() != 4) {
        return failed(kIllegalDataValue);
    }
    const auto pins = map.pins(function.table, address, count);
    if (!pins) {
        return failed(kIllegalDataAddress);
    }

    ModbusRequest request;
    request.table = function.table;
    request.pins = *pins;
    request.write = function.write;
    if (!function.write) {
        return request;
    }
    for (int n = 0; n < count; ++n) {
        const auto at = static_cast<std::size_t>(n);
        if (function.table == ModbusMap::Table::HoldingRegisters) {
            request.values.push_back(wordAt(values, 2 * at));
        } else if (function.single) {
            request.values.push_back(wordAt(values, 0) == kCoilOn ? 1 : 0);
        } else {
            request.values.push_back((values[at / 8] >> (at % 8)) & 1);
        }
    }
    return request;
}

}  // namespace axlsim
