// SPDX-License-Identifier: MIT
#include "orbel/ObserverRegistration.h"

namespace orbel {

ObserverRegistration::ObserverRegistration(HostObserver& observer) : observer_(observer) {
    addObserver(observer_);
}

ObserverRegistration::~ObserverRegistration() {
    removeObserver(observer_);
}

}  // namespace orbel
