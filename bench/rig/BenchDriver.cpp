// SPDX-License-Identifier: MIT
#include "BenchDriver.h"

#include "FullyConfigured.h"
#include "PLCNext.h"
#include "orbel/CallScope.h"

namespace axlbench {

BenchDriver::BenchDriver(ModuleKind module) {
    hosting::DriverConfig config = fullyConfigured(module);
    {
        orbel::CallScope creation(nullptr);
        driver_.reset(CreateSiObject(config.params, &config.mappings, &config.services));
    }
    orbel::CallScope scope(driver_.get());
    driver_->initialize();
}

}  // namespace axlbench
