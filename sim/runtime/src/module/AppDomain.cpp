// SPDX-License-Identifier: MIT
#include "Arp/System/Core/AppDomain.hpp"

#include "Arp/System/Core/Arp.h"

namespace Arp {

template <>
AppDomain* Singleton<AppDomain>::pInstance = nullptr;

AppDomain::AppDomain() = default;

AppDomain::~AppDomain() = default;

}  // namespace Arp
