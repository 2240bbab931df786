// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "axlsim/base/CaughtException.h"

namespace axlsim {

// A number setting ("Consecutive Number", "PinNum", "InitVal") read exactly as the driver reads
// it: base-10 std::stoi, which skips leading blanks, takes a sign, stops at the first character
// that is not a digit and ignores the rest, and throws when there is no digit or the value does
// not fit an int. Every prediction of axlsim about number settings comes from here.
class DriverNumber {
public:
    static DriverNumber read(const std::string& text);

    const std::string& text() const { return text_; }

    // The exception the driver's conversion throws for this text, if it throws.
    const std::optional<CaughtException>& exception() const { return exception_; }
    bool throws() const { return exception_.has_value(); }

    // The value the driver takes; 0 when the conversion throws.
    int value() const { return value_; }

    // False when the driver reads something else than the text shows: characters other than
    // blanks follow the digits ("1.5" is 1, "0x10" is 0, "7abc" is 7).
    bool readsAsWritten() const { return readsAsWritten_; }

private:
    std::string text_;
    std::optional<CaughtException> exception_;
    int value_ = 0;
    bool readsAsWritten_ = false;
};

}  // namespace axlsim
