// SPDX-License-Identifier: MIT
// axlsim's configuration reader over the seeds and regressions of its fuzzer.

#include "AxlsimConfigFuzzer.h"
#include "FuzzInputs.h"

TEST(FuzzInputs, EverySeedAndRegressionOfTheAxlsimConfigurationFuzzerPasses) {
    reliability::expectEveryFuzzInputPasses<fuzz::AxlsimConfigFuzzer>("axlsim_config");
}
