// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <type_traits>

namespace layouttest {

// Calls the operation in slot `slot` of the virtual table of the object at `object`, the way a
// host compiled by another compiler does: by position in the table, with the object as the first
// argument (Itanium C++ ABI, which the ARM EABI follows). Slots 0 and 1 are the complete and the
// deleting destructor. The argument types are named by the caller, exactly as declared.
template <class... Args>
void callSlot(void* object, std::size_t slot, std::type_identity_t<Args>... args) {
    using Slot = void (*)();
    using Entry = void (*)(void*, Args...);
    const Slot* table = *static_cast<const Slot* const*>(object);
    reinterpret_cast<Entry>(table[slot])(object, args...);
}

}  // namespace layouttest
