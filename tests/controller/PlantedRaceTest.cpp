// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace {

struct Outcome {
    int status;
    std::string output;
};

Outcome runPlantedRace(const std::string& argument) {
    const std::string command =
        "TSAN_OPTIONS=exitcode=66 '" PLANTED_RACE_PATH "' " + argument + " 2>&1";
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

bool builtWithThreadSanitizer() {
#if defined(__SANITIZE_THREAD__)
    return true;
#else
    return false;
#endif
}

class PlantedRace : public testing::Test {
protected:
    void SetUp() override {
        if (!builtWithThreadSanitizer()) {
            GTEST_SKIP() << "only meaningful under ThreadSanitizer";
        }
    }
};

}  // namespace

TEST_F(PlantedRace, ThreadSanitizerReportsTwoThreadsWritingAFrameByteWithoutItsLock) {
    const Outcome racy = runPlantedRace("");
    EXPECT_EQ(racy.status, 66) << racy.output;
    EXPECT_NE(racy.output.find("ThreadSanitizer: data race"), std::string::npos) << racy.output;
    EXPECT_NE(racy.output.find("PlantedRace.cpp"), std::string::npos) << racy.output;
}

TEST_F(PlantedRace, ThreadSanitizerReportsNothingWhenTheModuleTakesTheFrameLock) {
    const Outcome locked = runPlantedRace("locked");
    EXPECT_EQ(locked.status, 0) << locked.output;
    EXPECT_EQ(locked.output.find("ThreadSanitizer"), std::string::npos) << locked.output;
}
