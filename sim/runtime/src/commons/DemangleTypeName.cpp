// SPDX-License-Identifier: MIT
#include <cxxabi.h>

#include <cstdlib>
#include <memory>

#include "Arp/System/Core/Arp.h"

namespace Arp {

String DemangleTypeName(const char* mangledName) {
    if (mangledName == nullptr) {
        return String();
    }
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> demangled(
        abi::__cxa_demangle(mangledName, nullptr, nullptr, &status), &std::free);
    if (status != 0 || demangled == nullptr) {
        return mangledName;
    }
    return demangled.get();
}

}  // namespace Arp
