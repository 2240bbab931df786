// SPDX-License-Identifier: MIT
#include "BenchRig.h"

#include <stdexcept>

#include "FullyConfigured.h"
#include "hosting/HostCalls.h"
#include "orbel/DriverThreads.h"

namespace axlbench {

BenchRig::BenchRig(ModuleKind module)
    : station_(vplc::Station::of(
          {module == ModuleKind::Digital ? vplc::Module::DI8_DO8 : vplc::Module::AI2_AO2})) {}

BenchRig::~BenchRig() {
    orbel::endAllDriverThreads();
}

void BenchRig::startDriver(ModuleKind module) {
    driver_ = hosting::host::create(fullyConfigured(module));
    hosting::host::initialize(*driver_);
    if (host_.stops() != 0 || host_.failures() != 0) {
        throw std::runtime_error("the driver did not start as configured");
    }
}

}  // namespace axlbench
