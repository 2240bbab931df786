#include "CallRegistry.h"

namespace vplc {

std::optional<std::string> CallRegistry::record(std::string_view function) {
    auto count = counts_.find(function);
    if (count == counts_.end())
        count = counts_.emplace(std::string(function), 0).first;
    ++count->second;

    if (faults_.empty())
        return std::nullopt;
    auto fault = faults_.find(function);
    if (fault == faults_.end())
        return std::nullopt;
    std::string errorText = fault->second.errorText;
    if (fault->second.remaining > 0 && --fault->second.remaining == 0)
        faults_.erase(fault);
    return errorText;
}

int CallRegistry::count(std::string_view function) const {
    auto count = counts_.find(function);
    return count == counts_.end() ? 0 : count->second;
}

void CallRegistry::inject(std::string_view function, const Fault& fault) {
    faults_.insert_or_assign(std::string(function), Armed{fault.remaining(), fault.errorText()});
}

void CallRegistry::clearFaults() {
    faults_.clear();
}

void CallRegistry::resetCounts() {
    counts_.clear();
}

}  // namespace vplc
