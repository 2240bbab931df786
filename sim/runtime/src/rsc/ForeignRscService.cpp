// SPDX-License-Identifier: MIT
#include "ForeignRscService.h"

#include "RuntimeState.h"

namespace vplc {

ForeignRscService::ForeignRscService() {
    RuntimeState::instance().serviceMade();
}

ForeignRscService::~ForeignRscService() {
    RuntimeState::instance().serviceDestroyed();
}

}  // namespace vplc
