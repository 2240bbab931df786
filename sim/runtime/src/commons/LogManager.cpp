// SPDX-License-Identifier: MIT
#include "Arp/System/Commons/Diagnostics/Logging/LogManager.hpp"

#include "RuntimeCall.h"
#include "RuntimeState.h"

namespace Arp::System::Commons::Diagnostics::Logging {

void LogManager::AssignAppDomain(Arp::AppDomain& domain) {
    vplc::enterRuntimeCall(vplc::Runtime::kLogAssignAppDomain);
    vplc::RuntimeState::instance().recordAssignment(vplc::Runtime::Manager::Log, domain);
}

}  // namespace Arp::System::Commons::Diagnostics::Logging
