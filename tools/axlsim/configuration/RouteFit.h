// SPDX-License-Identifier: MIT
#pragma once

#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/configuration/LoopConfig.h"

namespace axlsim {

// True when a route's map can turn what its source publishes into what its target takes. Either
// kind unknown (no such service) fits: that is another problem. Runs deliver only through routes
// that fit, and check names the others.
bool routeMapFits(Route::Map map, bool digitalSource, EventCatalog::Receiver receiver);

}  // namespace axlsim
