// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "LogMessage.h"
#include "TestDriver.h"
#include "orbel/CallScope.h"
#include "orbel/Recorder.h"

using hosttest::driverParams;
using hosttest::TestDriver;

namespace {

stSP_Params_t failingParams(const std::string& serviceName) {
    stSP_Params_t params = driverParams(serviceName);
    params.mapParams["Fail"] = "yes";
    return params;
}

}  // namespace

TEST(LogAttribution, ALineOnAHostThreadOutsideAnyScopeBelongsToNoDriver) {
    orbel::Recorder recorder;

    logMessage(2, "outside");

    ASSERT_EQ(recorder.logs().size(), 1u);
    EXPECT_EQ(recorder.logs()[0].driver, nullptr);
}

TEST(LogAttribution, ALineInsideACallScopeBelongsToItsDriver) {
    TestDriver driver(driverParams("IO1"));
    orbel::Recorder recorder;

    {
        orbel::CallScope scope(&driver);
        logMessage(2, "inside");
    }

    ASSERT_EQ(recorder.logs().size(), 1u);
    EXPECT_EQ(recorder.logs()[0].driver, &driver);
}

TEST(LogAttribution, TheInnermostScopeWinsAndTheOuterOneReturnsWhenItEnds) {
    TestDriver outer(driverParams("IO1"));
    TestDriver inner(driverParams("IO2"));
    orbel::Recorder recorder;

    {
        orbel::CallScope outerScope(&outer);
        {
            orbel::CallScope innerScope(&inner);
            logMessage(2, "inner");
        }
        logMessage(2, "outer");
    }
    logMessage(2, "none");

    const auto logs = recorder.logs();
    ASSERT_EQ(logs.size(), 3u);
    EXPECT_EQ(logs[0].driver, &inner);
    EXPECT_EQ(logs[1].driver, &outer);
    EXPECT_EQ(logs[2].driver, nullptr);
}

TEST(LogAttribution, TheVersionLineOfADriverBuiltInACreationScopeBelongsToTheNewDriver) {
    orbel::Recorder recorder;

    orbel::CallScope creation(nullptr);
    auto driver = std::make_unique<TestDriver>(driverParams("IO1"));
    logMessage(2, "after construction");

    EXPECT_EQ(orbel::CallScope::current(), driver.get());
    const auto logs = recorder.logs(driver.get());
    ASSERT_EQ(logs.size(), 2u);
    EXPECT_EQ(logs[0].level, 4);
    EXPECT_EQ(logs[0].text, "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO1]");
    EXPECT_EQ(logs[1].text, "after construction");
}

TEST(LogAttribution, TheVersionLineOfAConstructorThatThrowsBelongsToTheDriverBeingBuilt) {
    orbel::Recorder recorder;

    orbel::CallScope creation(nullptr);
    EXPECT_THROW(std::make_unique<TestDriver>(failingParams("IO7")), std::invalid_argument);

    const CSI_base* failed = orbel::CallScope::current();
    ASSERT_NE(failed, nullptr);
    const auto logs = recorder.logs();
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].driver, failed);
    EXPECT_EQ(logs[0].text, "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO7]");
}

TEST(LogAttribution, ALineInACreationScopeBeforeAnyDriverIsBuiltBelongsToNoDriver) {
    orbel::Recorder recorder;

    orbel::CallScope creation(nullptr);
    logMessage(2, "before");

    ASSERT_EQ(recorder.logs().size(), 1u);
    EXPECT_EQ(recorder.logs()[0].driver, nullptr);
}

TEST(LogAttribution, ACreationScopeKeepsTheFirstDriverBuiltInIt) {
    orbel::Recorder recorder;

    orbel::CallScope creation(nullptr);
    TestDriver first(driverParams("IO1"));
    TestDriver second(driverParams("IO2"));

    EXPECT_EQ(orbel::CallScope::current(), &first);
    EXPECT_EQ(recorder.logs(&first).size(), 2u);
    EXPECT_TRUE(recorder.logs(&second).empty());
}

TEST(LogAttribution, ADriverBuiltOutsideAnyCreationScopeLeavesTheCurrentScopeAlone) {
    TestDriver owner(driverParams("IO1"));
    orbel::Recorder recorder;

    orbel::CallScope scope(&owner);
    TestDriver other(driverParams("IO2"));

    EXPECT_EQ(orbel::CallScope::current(), &owner);
    EXPECT_EQ(recorder.logs(&owner).size(), 1u);
}

TEST(LogAttribution, ALineOnADriverThreadBelongsToTheOwnerOfTheThreadEvenInsideAnotherScope) {
    TestDriver other(driverParams("IO2"));
    orbel::Recorder recorder;
    TestDriver driver(driverParams("IO1"), [&other](TestDriver&) {
        orbel::CallScope scope(&other);
        logMessage(2, "from the thread");
    });

    driver.initialize();
    driver.joinThread();

    const auto logs = recorder.logs(&driver);
    ASSERT_EQ(logs.size(), 1u);
    EXPECT_EQ(logs[0].text, "from the thread");
    EXPECT_TRUE(recorder.logs(&other).empty());
}

TEST(LogAttribution, ALineLoggedWhileAnEventIsReceivedBelongsToTheReceiver) {
    struct LoggingDriver : TestDriver {
        using TestDriver::TestDriver;
        void onReceiveEvent(stEventParams_t) override { logMessage(2, "received"); }
    };
    LoggingDriver driver(driverParams("IO1"));
    orbel::Recorder recorder;

    driver.receiveEvent(stEventParams_t{nullptr, 3, 0});

    ASSERT_EQ(recorder.logs().size(), 1u);
    EXPECT_EQ(recorder.logs()[0].driver, &driver);
}
