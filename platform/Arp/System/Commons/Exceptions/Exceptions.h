// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Commons/Text/Formatter.hpp"
#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"
#include "Arp/System/Core/Exception.hpp"

namespace Arp::System::Commons {

// An argument was not acceptable. The message is built from a format and its arguments (see
// Text::Formatter); the offending argument's name and value are kept beside it.
class ARP_SYSTEM_API ArgumentException : public Arp::Exception {
public:
    template <class... Args>
    ArgumentException(const String& argumentName, const String& argumentValue, const String& format,
                      const Args&... args)
        : Exception(Text::Formatter::Format(format, args...)),
          argumentName_(argumentName),
          argumentValue_(argumentValue) {}
    ~ArgumentException() override;

    const String& GetArgumentName() const;
    const String& GetArgumentValue() const;

private:
    String argumentName_;
    String argumentValue_;
};

// An operation is not possible in the present state.
class ARP_SYSTEM_API InvalidOperationException : public Arp::Exception {
public:
    template <class... Args>
    explicit InvalidOperationException(const String& format, const Args&... args)
        : Exception(Text::Formatter::Format(format, args...)) {}
    ~InvalidOperationException() override;
};

// An object is not of the type it was expected to be.
class ARP_SYSTEM_API InvalidCastException : public Arp::Exception {
public:
    template <class... Args>
    explicit InvalidCastException(const String& format, const Args&... args)
        : Exception(Text::Formatter::Format(format, args...)) {}
    ~InvalidCastException() override;
};

}  // namespace Arp::System::Commons
