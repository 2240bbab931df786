// SPDX-License-Identifier: MIT
// The fuzz targets run over their seed corpora and over every input that once made them fail,
// so that what a fuzzer found stays fixed in every build.

#include "ConfigurationFuzzer.h"
#include "EventFuzzer.h"
#include "FuzzInputs.h"

TEST(FuzzInputs, EverySeedAndRegressionOfTheConfigurationFuzzerPasses) {
    reliability::expectEveryFuzzInputPasses<fuzz::ConfigurationFuzzer>("configuration");
}

TEST(FuzzInputs, EverySeedAndRegressionOfTheEventFuzzerPasses) {
    reliability::expectEveryFuzzInputPasses<fuzz::EventFuzzer>("event");
}
