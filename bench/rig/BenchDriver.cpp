#include "BenchDriver.h"

#include "FullyConfigured.h"
#include "PLCNext.h"
#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"

namespace axlbench {

BenchDriver::BenchDriver(ModuleKind module) {
    testsupport::DriverConfig config = fullyConfigured(module);
    {
        orbel::CallScope creation(nullptr);
        driver_ = CreateSiObject(config.params, &config.mappings, &config.services);
    }
    try {
        orbel::CallScope scope(driver_);
        driver_->initialize();
    } catch (...) {
        orbel::destroyDriver(driver_);
        throw;
    }
}

BenchDriver::~BenchDriver() {
    orbel::destroyDriver(driver_);
}

}  // namespace axlbench
