// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Arp/System/Core/Exception.hpp"
#include "Arp/System/Module/ArpSystemModule.h"
#include "Caught.h"
#include "OperationRecorder.h"
#include "RuntimeTest.h"
#include "vplc/Fault.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"

namespace {

using vplc::Runtime;

class ModuleMain : public RuntimeTest {
protected:
    void SetUp() override {
        RuntimeTest::SetUp();
        ArpPlcDomain_SetHandler(OperationRecorder::handle);
    }
};

void startTarnwick() {
    ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings");
}

TEST_F(ModuleMain, ByDefaultItReturnsADomain) {
    EXPECT_NE(ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings"), nullptr);
}

TEST_F(ModuleMain, EveryStartHandsOutTheSameDomain) {
    Arp::AppDomain* first = ArpSystemModuleMain("tarnwick", "a");
    Arp::AppDomain* second = ArpSystemModuleMain("other", "b");

    EXPECT_EQ(first, second);
}

TEST_F(ModuleMain, ItsArgumentsAreRecordedInCallOrder) {
    ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings");
    ArpSystemModuleMain(nullptr, nullptr);

    std::vector<Runtime::MainCall> expected{{"tarnwick", "/opt/run/./Default.acf.settings"},
                                            {"", ""}};
    EXPECT_EQ(Runtime::moduleMainCalls(), expected);
    EXPECT_EQ(vplc::calls(Runtime::kModuleMain), 2);
}

TEST_F(ModuleMain, ReturningNullStartsNoPlc) {
    Runtime::setModuleMain(Runtime::MainOutcome::NullDomain);

    EXPECT_EQ(ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings"), nullptr);
    Runtime::waitUntilDelivered();
    EXPECT_TRUE(OperationRecorder::operations().empty());
    EXPECT_EQ(Runtime::moduleMainCalls().size(), 1u);
}

TEST_F(ModuleMain, AStdExceptionCarriesTheChosenTextAndStartsNoPlc) {
    Runtime::setModuleMain(Runtime::MainOutcome::StdException, "licence expired");

    auto e = caught<std::runtime_error>(startTarnwick);

    ASSERT_TRUE(e.has_value());
    EXPECT_STREQ(e->what(), "licence expired");
    Runtime::waitUntilDelivered();
    EXPECT_TRUE(OperationRecorder::operations().empty());
}

TEST_F(ModuleMain, AnExceptionOfUnknownTypeIsTheInt42) {
    Runtime::setModuleMain(Runtime::MainOutcome::UnknownException);

    auto e = caught<int>(startTarnwick);

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(*e, 42);
    EXPECT_EQ(*e, Runtime::kUnknownExceptionValue);
}

TEST_F(ModuleMain, AnInjectedFaultThrowsAnArpExceptionWithItsTextAndStartsNoPlc) {
    vplc::inject(Runtime::kModuleMain, vplc::Fault::next("No licence for tarnwick"));

    auto e = caught<Arp::Exception>(startTarnwick);

    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->GetMessage(), "No licence for tarnwick");
    EXPECT_STREQ(e->what(), "No licence for tarnwick");
    EXPECT_EQ(Runtime::moduleMainCalls().size(), 1u);
    Runtime::waitUntilDelivered();
    EXPECT_TRUE(OperationRecorder::operations().empty());
}

TEST_F(ModuleMain, AFaultForTheNextCallLeavesTheCallAfterItToStart) {
    vplc::inject(Runtime::kModuleMain, vplc::Fault::next("No licence for tarnwick"));
    EXPECT_THROW(startTarnwick(), Arp::Exception);

    EXPECT_NE(ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings"), nullptr);
}

TEST_F(ModuleMain, ResetBringsBackTheDomainAndForgetsTheCalls) {
    Runtime::setModuleMain(Runtime::MainOutcome::NullDomain);
    startTarnwick();

    Runtime::reset();

    EXPECT_TRUE(Runtime::moduleMainCalls().empty());
    EXPECT_NE(ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings"), nullptr);
}

}  // namespace
