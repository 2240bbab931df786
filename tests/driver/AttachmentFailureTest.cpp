// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <vector>

#include "hosting/DriverConfig.h"
#include "hosting/HostCalls.h"
#include "hosting/LoggedLine.h"
#include "orbel/Recorder.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"

namespace host = hosting::host;
using hosting::DriverConfig;
using hosting::LoggedLine;

namespace {

const LoggedLine kNotAttached{
    2,
    "CPLCNext: Not attached to the PLCnext runtime (loading the Arp system "
    "module failed); the driver does not start.",
    "CPLCNext: Not attached to the PLCnext runtime (loading the Arp system "
    "module failed); the driver does not start."};

// The attachment is made once per process: in this program it always fails.
class WithoutRuntime : public ::testing::Test {
protected:
    WithoutRuntime() { vplc::Runtime::setModuleMain(vplc::Runtime::MainOutcome::NullDomain); }
    ~WithoutRuntime() override { vplc::Runtime::reset(); }

    orbel::Recorder recorder_;
    vplc::Station station_ = vplc::Station::of({vplc::Module::DI8_DO8});
};

}  // namespace

TEST_F(WithoutRuntime, ADriverThatCannotAttachReportsItAndDoesNotStart) {
    auto driver = host::create(DriverConfig::digital().digitalIn(1, "0").digitalOut(2, "1", "1"));
    recorder_.clear();

    host::initialize(*driver);

    EXPECT_EQ(hosting::loggedLines(recorder_), std::vector<LoggedLine>{kNotAttached});
    const auto stops = recorder_.stops(driver.get());
    ASSERT_EQ(stops.size(), 1u);
    EXPECT_FALSE(stops[0].hasService);
    EXPECT_EQ(stops[0].message, "PLCnext runtime not available");
    EXPECT_EQ(station_.calls("ArpPlcIo_GetBufferPtrByBufferID"), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_ReadFromAxioToGds"), 0);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), 0);
    EXPECT_TRUE(recorder_.threadStarts().empty());
}

TEST_F(WithoutRuntime, EveryLaterDriverOfTheProcessIsRefusedTheSameWay) {
    auto first = host::create(DriverConfig::digital());
    host::initialize(*first);
    auto second = host::create(DriverConfig::analog());
    recorder_.clear();

    host::initialize(*second);

    EXPECT_EQ(hosting::loggedLines(recorder_), std::vector<LoggedLine>{kNotAttached});
    ASSERT_EQ(recorder_.stops(second.get()).size(), 1u);
    EXPECT_EQ(recorder_.stops(second.get())[0].message, "PLCnext runtime not available");
    EXPECT_EQ(station_.buffersHeld(), 0);
    EXPECT_TRUE(recorder_.threadStarts().empty());
}
