#include "ExposedDriver.h"

namespace drivertest {

ExposedDriver::ExposedDriver(const DriverConfig& config)
    : CPLCNext(config.params, config.mappings, config.services) {}

}  // namespace drivertest
