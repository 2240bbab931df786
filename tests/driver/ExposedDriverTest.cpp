// SPDX-License-Identifier: MIT
#include "ExposedDriverTest.h"

#include "hosting/HostCalls.h"

namespace drivertest {

testsupport::ExposedDriver& ExposedDriverTest::start(const hosting::DriverConfig& config,
                                                     INumberedPinModule* module) {
    driver_.reset(new testsupport::ExposedDriver(config));
    if (module != nullptr) {
        driver_->setModule(module);
    }
    hosting::host::initialize(*driver_);
    clock_.settle();
    return *driver_;
}

std::vector<hosting::LoggedLine> ExposedDriverTest::logs() const {
    return hosting::loggedLines(recorder_, driver_.get());
}

}  // namespace drivertest
