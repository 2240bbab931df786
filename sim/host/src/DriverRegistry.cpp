// SPDX-License-Identifier: MIT
#include "DriverRegistry.h"

#include <cstdio>

#include "SI_base.h"

namespace orbel {

namespace {

std::uintptr_t addressOf(const void* object) {
    return reinterpret_cast<std::uintptr_t>(object);
}

std::string addressText(const void* object) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", object);
    return text;
}

}  // namespace

DriverRegistry& DriverRegistry::instance() {
    // Never destroyed: drivers may outlive the library's static objects at exit.
    static DriverRegistry* const registry = new DriverRegistry;
    return *registry;
}

void DriverRegistry::add(const CSI_base& driver, std::string name) {
    std::lock_guard lock(mutex_);
    drivers_.insert_or_assign(addressOf(&driver), Entry{&driver, std::move(name)});
}

void DriverRegistry::remove(const CSI_base& driver) {
    std::lock_guard lock(mutex_);
    drivers_.erase(addressOf(&driver));
}

std::string DriverRegistry::label(const CSI_base* driver) const {
    {
        std::lock_guard lock(mutex_);
        auto found = drivers_.find(addressOf(driver));
        if (found != drivers_.end() && !found->second.name.empty()) {
            return found->second.name;
        }
    }
    return addressText(driver);
}

const CSI_base* DriverRegistry::driverOf(const void* object) const {
    std::lock_guard lock(mutex_);
    auto candidate = drivers_.lower_bound(addressOf(object));
    if (candidate == drivers_.end()) {
        return nullptr;
    }
    const CSI_base* driver = candidate->second.driver;
    return dynamic_cast<const void*>(driver) == object ? driver : nullptr;
}

}  // namespace orbel
