// SPDX-License-Identifier: MIT
#include "CallRegistry.h"

namespace vplc {

CallRegistry::Slot& CallRegistry::slot(std::string_view function) {
    std::lock_guard lock(slotsMutex_);
    auto found = slots_.find(function);
    if (found == slots_.end()) {
        found = slots_.try_emplace(std::string(function)).first;
    }
    return found->second;
}

std::optional<std::string> CallRegistry::record(Slot& slot, std::string_view function) {
    slot.count.fetch_add(1, std::memory_order_relaxed);
    if (!slot.armed.load(std::memory_order_relaxed)) {
        return std::nullopt;
    }
    std::lock_guard lock(faultsMutex_);
    auto fault = faults_.find(function);
    if (fault == faults_.end()) {
        return std::nullopt;
    }
    std::string errorText = fault->second.errorText;
    if (fault->second.remaining > 0 && --fault->second.remaining == 0) {
        faults_.erase(fault);
        slot.armed.store(false, std::memory_order_relaxed);
    }
    return errorText;
}

int CallRegistry::count(std::string_view function) const {
    std::lock_guard lock(slotsMutex_);
    auto found = slots_.find(function);
    return found == slots_.end() ? 0 : found->second.count.load(std::memory_order_relaxed);
}

void CallRegistry::inject(std::string_view function, const Fault& fault) {
    Slot& armed = slot(function);
    std::lock_guard lock(faultsMutex_);
    faults_.insert_or_assign(std::string(function), Armed{fault.remaining(), fault.errorText()});
    armed.armed.store(true, std::memory_order_relaxed);
}

void CallRegistry::clearFaults() {
    std::lock_guard lock(faultsMutex_);
    for (const auto& [function, fault] : faults_) {
        slot(function).armed.store(false, std::memory_order_relaxed);
    }
    faults_.clear();
}

void CallRegistry::resetCounts() {
    std::lock_guard lock(slotsMutex_);
    for (auto& [function, slot] : slots_) {
        slot.count.store(0, std::memory_order_relaxed);
    }
}

}  // namespace vplc
