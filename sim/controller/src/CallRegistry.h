// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vplc/Fault.h"

namespace vplc {

// Call counts and armed faults of the platform functions, by name. A function's slot is looked up
// once per call site and counted with a relaxed atomic, so that counting orders no two callers;
// its fault table is consulted, under a mutex of its own, only while a fault is armed for it.
class CallRegistry {
public:
    struct Slot {
        std::atomic<int> count = 0;
        std::atomic<bool> armed = false;
    };

    // The slot of `function`, made on first use; it lives as long as the registry.
    Slot& slot(std::string_view function);

    // Counts the call; returns the error text of a fault that is due, consuming it.
    std::optional<std::string> record(Slot& slot, std::string_view function);

    int count(std::string_view function) const;
    void inject(std::string_view function, const Fault& fault);
    void clearFaults();
    void resetCounts();

private:
    struct Armed {
        int remaining;  // -1: every call
        std::string errorText;
    };

    // Looked up by a string_view without making a string.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const {
            return std::hash<std::string_view>{}(name);
        }
    };
    template <class Value>
    using ByName = std::unordered_map<std::string, Value, NameHash, std::equal_to<>>;

    mutable std::mutex slotsMutex_;
    ByName<Slot> slots_;  // nodes never move, so a slot stays where it was made
    std::mutex faultsMutex_;
    ByName<Armed> faults_;
};

}  // namespace vplc
