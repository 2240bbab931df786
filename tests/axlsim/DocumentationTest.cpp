// SPDX-License-Identifier: MIT
// The README's example configuration and the configuration reference stay true: the example
// reads, the driver refuses only what it is meant to, and the reference names every key.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Program.h"
#include "axlsim/check/ConfigCheck.h"
#include "axlsim/configuration/ConfigReader.h"

namespace {

using ::testing::HasSubstr;

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string readmeExample() {
    const std::string readme = slurp(AXLSIM_README);
    const std::string fence = "```jsonc\n";
    const auto start = readme.find(fence);
    const auto end = readme.find("```", start + fence.size());
    if (start == std::string::npos || end == std::string::npos) {
        return "";
    }
    return readme.substr(start + fence.size(), end - start - fence.size());
}

TEST(Documentation, TheReadmeExampleGivesEveryAnalogEventIdTheSize4AndFailsOnlyWhereItMeansTo) {
    const auto config = axlsim::configreader::readText(readmeExample(), "README.md");
    const auto findings = axlsim::configcheck::check(config);
    std::string problems;
    for (const auto& finding : findings) {
        problems += finding.problem + "\n";
    }
    ASSERT_EQ(findings.size(), 1U) << problems;
    EXPECT_EQ(findings[0].stopMessage, "Null data pointer");
    bool analog = false;
    for (const auto& driver : config.drivers) {
        for (const auto& [key, service] : driver.services) {
            if (service.type == "AnalogIn" || service.type == "AnalogOut") {
                analog = true;
                EXPECT_EQ(driver.mappings.at(service.eventId), 4) << service.eventId;
            }
        }
    }
    EXPECT_TRUE(analog);
}

TEST(Documentation, TheReadmeExampleRunsAsItExpects) {
    const auto run =
        axlsimtest::runProgram({"run", axlsimtest::writeConfig("readme.json", readmeExample())});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, HasSubstr("\"Null data pointer\""));
}

TEST(Documentation, TheConfigurationReferenceNamesEveryKey) {
    const std::string reference = slurp(AXLSIM_CONFIGURATION_REFERENCE);
    ASSERT_FALSE(reference.empty());
    for (std::string_view key : axlsim::configreader::keys()) {
        EXPECT_THAT(reference, HasSubstr("`" + std::string(key) + "`")) << key;
    }
    for (const char* setting : {"\"Consecutive Number\"", "\"PinNum\"", "\"InitVal\""}) {
        EXPECT_THAT(reference, HasSubstr(setting));
    }
}

}  // namespace
