// SPDX-License-Identifier: MIT
#include "axlsim/configuration/DriverNumber.h"

#include <cctype>
#include <string>

namespace axlsim {

DriverNumber DriverNumber::read(const std::string& text) {
    DriverNumber number;
    number.text_ = text;
    std::size_t used = 0;
    try {
        number.value_ = std::stoi(text, &used);
    } catch (...) {
        number.exception_ = CaughtException::current();
        return number;
    }
    number.readsAsWritten_ = true;
    for (std::size_t i = used; i < text.size(); ++i) {
        if (std::isspace(static_cast<unsigned char>(text[i])) == 0) {
            number.readsAsWritten_ = false;
        }
    }
    return number;
}

}  // namespace axlsim
