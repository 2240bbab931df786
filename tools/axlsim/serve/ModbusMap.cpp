// SPDX-License-Identifier: MIT
#include "axlsim/serve/ModbusMap.h"

namespace axlsim {

namespace {

constexpr int kDigitalPins = 8;
constexpr int kAnalogChannels = 2;

// How many pins a module of this kind has in the table: none when the table is not its kind's.
int pinsIn(vplc::Module module, ModbusMap::Table table) {
    const bool digitalTable =
        table == ModbusMap::Table::Coils || table == ModbusMap::Table::DiscreteInputs;
    if (module == vplc::Module::DI8_DO8) {
        return digitalTable ? kDigitalPins : 0;
    }
    return digitalTable ? 0 : kAnalogChannels;
}

}  // namespace

ModbusMap::ModbusMap(std::vector<vplc::Module> bus) : bus_(std::move(bus)) {}

std::optional<ModbusMap::Pins> ModbusMap::pins(Table table, int address, int count) const {
    if (address < 0 || count < 1 || address >= size()) {
        return std::nullopt;
    }
    const int index = address / kBlock;
    const int first = address % kBlock;
    if (first + count > pinsIn(bus_[static_cast<std::size_t>(index)], table)) {
        return std::nullopt;
    }
    return Pins{index + 1, first, count};
}

}  // namespace axlsim
