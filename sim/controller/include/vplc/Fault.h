#pragma once

#include <string>

namespace vplc {

// A failure to inject into a platform call: the call returns false (or, for a lookup, reports no
// result) and sets the last error text, as the real controller does.
class Fault {
public:
    static Fault next(std::string errorText);              // the next call fails
    static Fault times(int count, std::string errorText);  // the next `count` calls fail
    static Fault always(std::string errorText);            // every call fails until cleared

    int remaining() const { return remaining_; }  // -1: always
    const std::string& errorText() const { return errorText_; }

private:
    Fault(int remaining, std::string errorText);
    int remaining_;
    std::string errorText_;
};

}  // namespace vplc
