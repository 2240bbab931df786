// SPDX-License-Identifier: MIT
#pragma once

#include <exception>

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp {

// The base of every exception that the Arp runtime libraries throw.
class ARP_SYSTEM_API Exception : public std::exception {
public:
    explicit Exception(String message);
    ~Exception() override;

    const String& GetMessage() const;
    const char* what() const noexcept override;

private:
    String message_;
};

}  // namespace Arp
