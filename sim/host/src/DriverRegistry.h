// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

class CSI_base;

namespace orbel {

// Every live CSI_base of the process, with the name it is shown by. A driver is registered from
// the start of its CSI_base constructor to the end of its CSI_base destructor.
class DriverRegistry {
public:
    static DriverRegistry& instance();

    void add(const CSI_base& driver, std::string name);
    void remove(const CSI_base& driver);

    // The driver's name: its service name, or its address if that is empty or it is gone.
    std::string label(const CSI_base* driver) const;

    // The driver whose complete object starts at `object`, or null. A driver's CSI_base part is
    // the first registered one at or after the start of its complete object; the candidate is
    // confirmed with its own complete-object address.
    const CSI_base* driverOf(const void* object) const;

private:
    DriverRegistry() = default;

    struct Entry {
        const CSI_base* driver;
        std::string name;
    };

    mutable std::mutex mutex_;
    std::map<std::uintptr_t, Entry> drivers_;
};

}  // namespace orbel
