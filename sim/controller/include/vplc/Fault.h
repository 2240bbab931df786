// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vplc {

// A failure to inject into a platform call: the call returns false (or, for a lookup, reports no
// result) and sets the last error text, as the real controller does. A failed call changes
// nothing else: a lookup leaves its output untouched, a Begin takes no lock and leaves the data
// pointer untouched, an End leaves the lock held by its thread (until that thread's next End on
// the frame), a bus copy copies nothing, ArpPlc_GetLastError hands out the fault's text, and
// ArpPlcDomain_SetHandler keeps the handler registered before.
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
