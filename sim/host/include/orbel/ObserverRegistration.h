// SPDX-License-Identifier: MIT
#pragma once

#include "orbel/HostObserver.h"

namespace orbel {

// Keeps an observer registered while it lives. An observer that registers itself holds one as its
// last member: it is then registered only once the rest of it is made, and removed before any of
// the rest is taken apart.
class ObserverRegistration {
public:
    explicit ObserverRegistration(HostObserver& observer);
    ~ObserverRegistration();
    ObserverRegistration(const ObserverRegistration&) = delete;
    ObserverRegistration& operator=(const ObserverRegistration&) = delete;

private:
    HostObserver& observer_;
};

}  // namespace orbel
