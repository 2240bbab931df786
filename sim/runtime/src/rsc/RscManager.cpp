// SPDX-License-Identifier: MIT
#include "Arp/System/Rsc/RscManager.hpp"

#include "RuntimeCall.h"
#include "RuntimeState.h"

namespace Arp::System::Rsc {

void RscManager::AssignAppDomain(Arp::AppDomain& domain) {
    vplc::enterRuntimeCall(vplc::Runtime::kRscAssignAppDomain);
    vplc::RuntimeState::instance().recordAssignment(vplc::Runtime::Manager::Rsc, domain);
}

}  // namespace Arp::System::Rsc
