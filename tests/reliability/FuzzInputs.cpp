// SPDX-License-Identifier: MIT
#include "FuzzInputs.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace reliability {

std::vector<std::filesystem::path> fuzzInputsOf(const std::string& target) {
    std::vector<std::filesystem::path> inputs;
    for (const char* kind : {"corpus", "regressions"}) {
        const std::filesystem::path directory = std::filesystem::path(AXL_FUZZ_DIR) / kind / target;
        if (!std::filesystem::is_directory(directory)) {
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(directory)) {
            if (entry.is_regular_file()) {
                inputs.push_back(entry.path());
            }
        }
    }
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

std::vector<uint8_t> bytesOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

}  // namespace reliability
