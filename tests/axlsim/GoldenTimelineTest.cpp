// SPDX-License-Identifier: MIT
// The JSON timeline of every example, compared with its golden file in golden/. After a change
// that is meant to change a timeline, regenerate the files and review the difference:
//   AXLSIM_UPDATE_GOLDEN=1 ctest -R GoldenTimeline

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Program.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> examples() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(AXLSIM_EXAMPLES)) {
        if (entry.path().extension() == ".json") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string slurp(const fs::path& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class GoldenTimeline : public ::testing::TestWithParam<std::string> {};

TEST_P(GoldenTimeline, OfTheExampleIsTheGoldenOne) {
    const fs::path example = fs::path(AXLSIM_EXAMPLES) / (GetParam() + ".json");
    const fs::path golden = fs::path(AXLSIM_GOLDEN) / (GetParam() + ".jsonl");
    const auto run = axlsimtest::runProgram({"run", example.string(), "--json"});
    ASSERT_EQ(run.status, 0) << run.err;
    if (std::getenv("AXLSIM_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(golden) << run.out;
        GTEST_SKIP() << "wrote " << golden;
    }
    ASSERT_TRUE(fs::exists(golden)) << "no golden file; write it with AXLSIM_UPDATE_GOLDEN=1";
    EXPECT_EQ(run.out, slurp(golden));
}

// The virtual clock resumes the drivers in a fixed order, so every run of a configuration is the
// same run, down to the byte, in each of the outputs.
TEST_P(GoldenTimeline, IsTheSameInEveryRunOfTheExample) {
    const fs::path example = fs::path(AXLSIM_EXAMPLES) / (GetParam() + ".json");
    for (const bool json : {true, false}) {
        std::vector<std::string> arguments{"run", example.string()};
        if (json) {
            arguments.emplace_back("--json");
        }
        const auto first = axlsimtest::runProgram(arguments);
        const auto second = axlsimtest::runProgram(arguments);
        ASSERT_EQ(first.status, 0) << first.err;
        EXPECT_FALSE(first.out.empty());
        EXPECT_EQ(first.out, second.out) << (json ? "--json" : "text");
        EXPECT_EQ(first.err, second.err);
        EXPECT_EQ(first.status, second.status);
    }
}

INSTANTIATE_TEST_SUITE_P(Examples, GoldenTimeline, ::testing::ValuesIn(examples()),
                         [](const auto& info) { return info.param; });

TEST(GoldenTimeline, EveryGoldenFileBelongsToAnExample) {
    const auto names = examples();
    for (const auto& entry : fs::directory_iterator(AXLSIM_GOLDEN)) {
        EXPECT_NE(std::find(names.begin(), names.end(), entry.path().stem().string()), names.end())
            << entry.path() << " has no example";
    }
}

}  // namespace
