// SPDX-License-Identifier: MIT
#include "Arp/System/Commons/Exceptions/Exceptions.h"

namespace Arp::System::Commons {

ArgumentException::~ArgumentException() = default;

const String& ArgumentException::GetArgumentName() const {
    return argumentName_;
}

const String& ArgumentException::GetArgumentValue() const {
    return argumentValue_;
}

InvalidOperationException::~InvalidOperationException() = default;

InvalidCastException::~InvalidCastException() = default;

}  // namespace Arp::System::Commons
