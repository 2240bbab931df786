// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace reliability {

// The seed inputs of a fuzz target (fuzz/corpus/<target>/) and every input that once made it fail
// (fuzz/regressions/<target>/), in name order.
std::vector<std::filesystem::path> fuzzInputsOf(const std::string& target);

std::vector<uint8_t> bytesOf(const std::filesystem::path& file);

// Runs each input of `target` through a fuzz target body, which must find nothing.
template <class Fuzzer>
void expectEveryFuzzInputPasses(const std::string& target) {
    Fuzzer fuzzer;
    const auto inputs = fuzzInputsOf(target);
    ASSERT_FALSE(inputs.empty());
    for (const auto& input : inputs) {
        SCOPED_TRACE(input.string());
        EXPECT_EQ(fuzzer.run(bytesOf(input)), "");
    }
}

}  // namespace reliability
