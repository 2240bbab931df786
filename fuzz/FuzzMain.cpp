// SPDX-License-Identifier: MIT
// libFuzzer entry of one fuzz target, named by the build: AXL_FUZZ_HEADER is its header in
// targets/, AXL_FUZZ_TARGET its class. The target lives for the whole run.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include AXL_FUZZ_HEADER

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static AXL_FUZZ_TARGET fuzzer;
    const std::string findings = fuzzer.run({data, size});
    if (!findings.empty()) {
        std::fprintf(stderr, "%s", findings.c_str());
        std::abort();
    }
    return 0;
}
