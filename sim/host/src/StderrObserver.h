// SPDX-License-Identifier: MIT
#pragma once

#include "orbel/HostObserver.h"

namespace orbel {

// Writes each report as one readable line to standard error, e.g.
// "[host] log L4 IO1: CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[IO1]".
// Drivers are named by their service name (their address if it is empty or the driver is gone);
// a report of no driver has no name.
class StderrObserver final : public HostObserver {
public:
    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadStarted(const CSI_base* driver) override;
    void threadEnded(const CSI_base* driver, std::string_view how) override;
};

}  // namespace orbel
