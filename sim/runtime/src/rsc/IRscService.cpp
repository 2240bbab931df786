// SPDX-License-Identifier: MIT
#include "Arp/System/Rsc/Services/IRscService.hpp"

namespace Arp::System::Rsc::Services {

IRscService::~IRscService() = default;

}  // namespace Arp::System::Rsc::Services
