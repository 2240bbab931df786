// SPDX-License-Identifier: MIT
#include "Arp/System/Core/Exception.hpp"

#include <utility>

namespace Arp {

Exception::Exception(String message) : message_(std::move(message)) {}

Exception::~Exception() = default;

const String& Exception::GetMessage() const {
    return message_;
}

const char* Exception::what() const noexcept {
    return message_.c_str();
}

}  // namespace Arp
