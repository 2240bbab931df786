// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Sanitizers.h"

namespace {

struct Outcome {
    int status;
    std::string output;
};

// The racing function of tests/controller/PlantedRace.cpp (GCC's reports name it without its
// class, clang's with it).
constexpr std::string_view kRacingFunction = "writeOutputs";

// Every race is reported, also a second one on an address already reported: the bus copy that
// reads the byte races with the unlocked write too, and may come first.
Outcome runPlantedRace(const std::string& argument) {
    const std::string command =
        "TSAN_OPTIONS='exitcode=66 suppress_equal_addresses=0' '" PLANTED_RACE_PATH "' " +
        argument + " 2>&1";
    Outcome outcome{-1, {}};
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return outcome;
    }
    std::array<char, 4096> chunk{};
    while (fgets(chunk.data(), static_cast<int>(chunk.size()), pipe) != nullptr) {
        outcome.output += chunk.data();
    }
    const int status = pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

using Stack = std::vector<std::string>;

// The data races that ThreadSanitizer reports, each as the stacks of its two accesses ("Write of
// size 1 at ... by thread T2:" and "Previous write of size 1 ..."), each stack as its frame lines.
// The rest of a report (where the threads were created, the memory's origin) is left out: a file
// name that shows there says nothing about the accesses.
std::vector<std::vector<Stack>> reportedRaces(const std::string& output) {
    std::vector<std::vector<Stack>> races;
    std::istringstream lines(output);
    bool inStack = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("WARNING: ThreadSanitizer: data race") != std::string::npos) {
            races.emplace_back();
            inStack = false;
            continue;
        }
        const bool access = line.rfind("  Write of size", 0) == 0 ||
                            line.rfind("  Read of size", 0) == 0 ||
                            line.rfind("  Previous write of size", 0) == 0 ||
                            line.rfind("  Previous read of size", 0) == 0;
        if (access && !races.empty()) {
            races.back().emplace_back();
            inStack = true;
        } else if (inStack && line.rfind("    #", 0) == 0) {
            races.back().back().push_back(line);
        } else {
            inStack = false;
        }
    }
    return races;
}

bool hasFrameOf(const Stack& stack, std::string_view function) {
    return std::any_of(stack.begin(), stack.end(), [function](const std::string& frame) {
        return frame.find(function) != std::string::npos;
    });
}

// A reported race whose two accesses are both the function's own.
bool raceWithin(const std::vector<std::vector<Stack>>& races, std::string_view function) {
    return std::any_of(races.begin(), races.end(), [function](const std::vector<Stack>& race) {
        return race.size() == 2 && hasFrameOf(race[0], function) && hasFrameOf(race[1], function);
    });
}

class PlantedRace : public testing::Test {
protected:
    void SetUp() override {
        if (!testsupport::builtWithThreadSanitizer()) {
            GTEST_SKIP() << "only meaningful under ThreadSanitizer";
        }
    }
};

}  // namespace

TEST_F(PlantedRace, ThreadSanitizerReportsTwoThreadsWritingAFrameByteWithoutItsLock) {
    const Outcome racy = runPlantedRace("");
    EXPECT_EQ(racy.status, 66) << racy.output;
    EXPECT_NE(racy.output.find("ThreadSanitizer: data race"), std::string::npos) << racy.output;
    // The two unlocked writes themselves, not only another race of the program.
    EXPECT_TRUE(raceWithin(reportedRaces(racy.output), kRacingFunction)) << racy.output;
}

TEST_F(PlantedRace, ThreadSanitizerReportsNothingWhenTheModuleTakesTheFrameLock) {
    const Outcome locked = runPlantedRace("locked");
    EXPECT_EQ(locked.status, 0) << locked.output;
    EXPECT_EQ(locked.output.find("ThreadSanitizer"), std::string::npos) << locked.output;
}
