// SPDX-License-Identifier: MIT
// libFuzzer entry of the axlsim configuration fuzzer (targets/AxlsimConfigFuzzer.h).

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "AxlsimConfigFuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::AxlsimConfigFuzzer fuzzer;
    const std::string findings = fuzzer.run({data, size});
    if (!findings.empty()) {
        std::fprintf(stderr, "%s", findings.c_str());
        std::abort();
    }
    return 0;
}
