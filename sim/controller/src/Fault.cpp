// SPDX-License-Identifier: MIT
#include "vplc/Fault.h"

#include <stdexcept>
#include <utility>

namespace vplc {

Fault::Fault(int remaining, std::string errorText)
    : remaining_(remaining), errorText_(std::move(errorText)) {}

Fault Fault::next(std::string errorText) {
    return Fault(1, std::move(errorText));
}

Fault Fault::times(int count, std::string errorText) {
    if (count < 1) {
        throw std::invalid_argument("A fault must fail at least one call");
    }
    return Fault(count, std::move(errorText));
}

Fault Fault::always(std::string errorText) {
    return Fault(-1, std::move(errorText));
}

}  // namespace vplc
