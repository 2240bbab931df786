// SPDX-License-Identifier: MIT
#pragma once

#include "orbel/HostObserver.h"
#include "orbel/Installation.h"

namespace orbel {

// Keeps an observer registered while it lives.
using ObserverRegistration = Installation<HostObserver, addObserver, removeObserver>;

}  // namespace orbel
