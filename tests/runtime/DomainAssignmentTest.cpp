// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <vector>

#include "Arp/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Arp/System/Core/AppDomain.hpp"
#include "Arp/System/Core/Exception.hpp"
#include "Arp/System/Module/ArpSystemModule.h"
#include "Arp/System/Rsc/RscManager.hpp"
#include "Caught.h"
#include "RuntimeTest.h"
#include "vplc/Fault.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"

namespace {

using Arp::System::Commons::Diagnostics::Logging::LogManager;
using Arp::System::Rsc::RscManager;
using vplc::Runtime;

class DomainAssignment : public RuntimeTest {};

TEST_F(DomainAssignment, BothManagersAreRecordedWithTheDomainInCallOrder) {
    Arp::AppDomain* domain = ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings");
    ASSERT_NE(domain, nullptr);

    LogManager::AssignAppDomain(*domain);
    RscManager::AssignAppDomain(*domain);

    std::vector<Runtime::Assignment> expected{{Runtime::Manager::Log, domain},
                                              {Runtime::Manager::Rsc, domain}};
    EXPECT_EQ(Runtime::domainAssignments(), expected);
}

TEST_F(DomainAssignment, EachManagerIsRecordedWithTheDomainItWasGiven) {
    Arp::AppDomain* domain = ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings");
    Arp::AppDomain other;

    RscManager::AssignAppDomain(other);
    LogManager::AssignAppDomain(*domain);

    std::vector<Runtime::Assignment> expected{{Runtime::Manager::Rsc, &other},
                                              {Runtime::Manager::Log, domain}};
    EXPECT_EQ(Runtime::domainAssignments(), expected);
}

TEST_F(DomainAssignment, AFaultThrowsAnArpExceptionAndAssignsNothing) {
    Arp::AppDomain domain;
    vplc::inject(Runtime::kLogAssignAppDomain, vplc::Fault::next("Logging is not configured"));

    auto e = caught<Arp::Exception>([&] { LogManager::AssignAppDomain(domain); });

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->GetMessage(), "Logging is not configured");
    EXPECT_EQ(vplc::calls(Runtime::kLogAssignAppDomain), 1);
    EXPECT_TRUE(Runtime::domainAssignments().empty());
}

TEST_F(DomainAssignment, ResetForgetsTheAssignments) {
    Arp::AppDomain domain;
    RscManager::AssignAppDomain(domain);

    Runtime::reset();

    EXPECT_TRUE(Runtime::domainAssignments().empty());
}

}  // namespace
