// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "modules/INumberedPinModule.h"

namespace drivertest {

// One module offering both digital and analog pins: the digital module at one bus position and
// the analog module at another, behind the one interface. No real terminal does this; it lets a
// test give one driver inputs of both kinds.
std::unique_ptr<INumberedPinModule> combinedModule(int digitalPosition, int analogPosition);

}  // namespace drivertest
