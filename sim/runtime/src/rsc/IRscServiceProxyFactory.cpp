// SPDX-License-Identifier: MIT
#include "Arp/System/Rsc/Services/IRscServiceProxyFactory.hpp"

namespace Arp::System::Rsc::Services {

IRscServiceProxyFactory::~IRscServiceProxyFactory() = default;

}  // namespace Arp::System::Rsc::Services
