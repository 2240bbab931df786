#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

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

    std::map<std::string, int, std::less<>> counts_;
    std::map<std::string, Armed, std::less<>> faults_;
};

}  // namespace vplc
