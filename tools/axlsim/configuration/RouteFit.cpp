// SPDX-License-Identifier: MIT
#include "axlsim/configuration/RouteFit.h"

namespace axlsim {

bool routeMapFits(Route::Map map, bool digitalSource, EventCatalog::Receiver receiver) {
    using Receiver = EventCatalog::Receiver;
    if (receiver == Receiver::None || receiver == Receiver::Restart) {
        return true;
    }
    switch (map) {
        case Route::Map::Copy:
            return digitalSource || receiver == Receiver::Analog;
        case Route::Map::Invert:
            return digitalSource && receiver == Receiver::Digital;
        case Route::Map::Above:
        case Route::Map::Below:
            return receiver == Receiver::Digital;
        case Route::Map::Scale:
            break;
    }
    return receiver == Receiver::Analog;
}

}  // namespace axlsim
