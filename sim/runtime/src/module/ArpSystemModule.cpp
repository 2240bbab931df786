// SPDX-License-Identifier: MIT
#include "Arp/System/Module/ArpSystemModule.h"

#include <stdexcept>

#include "Arp/System/Core/AppDomain.hpp"
#include "RuntimeCall.h"
#include "RuntimeState.h"

namespace {

// One application domain per process, as on the controller: made by the first start and handed
// out again by every later one.
Arp::AppDomain& processDomain() {
    static Arp::AppDomain domain;
    return domain;
}

}  // namespace

Arp::AppDomain* ArpSystemModuleMain(const char* applicationName, const char* acfSettingsPath) {
    vplc::RuntimeState& runtime = vplc::RuntimeState::instance();
    vplc::RuntimeState::MainDecision decision =
        runtime.enterModuleMain(applicationName, acfSettingsPath);
    vplc::enterRuntimeCall(vplc::Runtime::kModuleMain);
    switch (decision.outcome) {
        case vplc::Runtime::MainOutcome::NullDomain:
            return nullptr;
        case vplc::Runtime::MainOutcome::StdException:
            throw std::runtime_error(decision.text);
        case vplc::Runtime::MainOutcome::UnknownException:
            throw vplc::Runtime::kUnknownExceptionValue;
        case vplc::Runtime::MainOutcome::Domain:
            break;
    }
    Arp::AppDomain& domain = processDomain();
    runtime.moduleStarted();
    return &domain;
}
