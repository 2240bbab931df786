// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <vector>

#include "vplc/Module.h"

namespace axlsim {

// Where the bus stands in the four Modbus tables: the module at bus position p owns the sixteen
// addresses from 16 x (p - 1) in every table, and its pins or channels count from there. A digital
// module has coils (its inputs) and discrete inputs (its outputs); an analog module has holding
// registers (its inputs) and input registers (its outputs).
class ModbusMap {
public:
    enum class Table { Coils, DiscreteInputs, HoldingRegisters, InputRegisters };

    static constexpr int kBlock = 16;

    // Pins first to first + count - 1 of the module at `position`.
    struct Pins {
        int position = 1;
        int first = 0;
        int count = 0;
    };

    explicit ModbusMap(std::vector<vplc::Module> bus);

    // The pins that addresses `address` to `address + count - 1` of `table` name, when every one
    // of them names a pin; a range reaches over one module at most, since every module leaves
    // addresses of its block unused.
    std::optional<Pins> pins(Table table, int address, int count) const;

    // Addresses in every table: one block per module.
    int size() const { return static_cast<int>(bus_.size()) * kBlock; }

private:
    std::vector<vplc::Module> bus_;
};

}  // namespace axlsim
