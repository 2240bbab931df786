// SPDX-License-Identifier: MIT
// libFuzzer entry of the event fuzzer (targets/EventFuzzer.h). The fuzzer's two drivers live
// for the whole run.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "EventFuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static fuzz::EventFuzzer fuzzer;
    const std::string findings = fuzzer.run({data, size});
    if (!findings.empty()) {
        std::fprintf(stderr, "%s", findings.c_str());
        std::abort();
    }
    return 0;
}
