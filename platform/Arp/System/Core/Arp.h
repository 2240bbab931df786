// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <typeinfo>

#include "Arp/System/Core/ArpSystemExport.h"

namespace Arp {

using String = std::string;

class AppDomain;

// The process-wide instance of T. The library that owns T defines its pointer.
template <class T>
class ARP_SYSTEM_API Singleton {
public:
    static T* pInstance;
};

template <>
AppDomain* Singleton<AppDomain>::pInstance;

// The C++ name for a mangled type name as std::type_info::name() gives it; the mangled name
// itself if it cannot be demangled.
ARP_SYSTEM_API String DemangleTypeName(const char* mangledName);

// The C++ name of T, e.g. "Arp::AppDomain".
template <class T>
String TypeName() {
    return DemangleTypeName(typeid(T).name());
}

}  // namespace Arp
