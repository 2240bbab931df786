#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vplc/Fault.h"

namespace vplc {

// Call counts and armed faults of the platform functions, by name. Not locked: the controller's
// mutex guards it.
class CallRegistry {
public:
    // Counts the call; returns the error text of a fault that is due, consuming it.
    std::optional<std::string> record(std::string_view function);

    int count(std::string_view function) const;
    void inject(std::string_view function, const Fault& fault);
    void clearFaults();
    void resetCounts();

private:
    struct Armed {
        int remaining;  // -1: every call
        std::string errorText;
    };

    // Looked up by a string_view without making a string: every platform call is counted here.
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const {
            return std::hash<std::string_view>{}(name);
        }
    };
    template <class Value>
    using ByName = std::unordered_map<std::string, Value, NameHash, std::equal_to<>>;

    ByName<int> counts_;
    ByName<Armed> faults_;
};

}  // namespace vplc
