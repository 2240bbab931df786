// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "Findings.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

class CSI_base;

namespace fuzz {

// Watches what running drivers report while the host sends them events: checks every
// publication as it is made (on the scan thread) and counts stops and log lines per driver.
class PublicationWatch final : public orbel::HostObserver {
public:
    struct Input {
        uint32_t size;  // the payload size published
        bool analog;
        int channel;  // analog channel, for the values it has held
    };

    // The input events `driver` may publish.
    void expectInputs(const CSI_base* driver, std::map<uint32_t, Input> inputs);

    // Records that analog `channel` holds `value` from now on; call before the station holds it.
    void analogValueHeld(int channel, float value);

    struct Counts {
        int stops = 0;
        std::string lastStop;
        int failureLines = 0;
        int restartNotices = 0;
    };
    Counts counts(const CSI_base* driver) const;

    // What the watch found wrong so far; taking them clears them.
    std::string takeFindings();

    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;

private:
    mutable std::mutex mutex_;
    std::map<const CSI_base*, std::map<uint32_t, Input>> inputs_;
    std::map<const CSI_base*, Counts> counts_;
    std::set<uint32_t> heldValues_[2];  // bit patterns of the floats each channel has held
    Findings findings_;
    orbel::ObserverRegistration registration_{*this};
};

}  // namespace fuzz
