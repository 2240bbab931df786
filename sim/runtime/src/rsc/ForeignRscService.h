// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Rsc/Services/IRscService.hpp"

namespace vplc {

// A service of some other interface, handed out by a lookup that went wrong. Counted like the
// device-control service, so that a test sees it released.
class ForeignRscService : public Arp::System::Rsc::Services::IRscService {
public:
    ForeignRscService();
    ~ForeignRscService() override;
};

}  // namespace vplc
