// SPDX-License-Identifier: MIT
#include "orbel/HostObserver.h"

#include "ObserverHub.h"

namespace orbel {

void addObserver(HostObserver& observer) {
    ObserverHub::instance().add(observer);
}

void removeObserver(HostObserver& observer) {
    ObserverHub::instance().remove(observer);
}

}  // namespace orbel
