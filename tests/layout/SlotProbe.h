// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "HostRecords.h"
#include "PosixThread.h"
#include "SI_base.h"

namespace layouttest {

// A driver shaped like the real one (host base first and public, thread base second and
// private) whose virtual operations only note that they ran, with their arguments, so that a
// test can see where each virtual-table slot leads. It starts no thread.
class SlotProbe : public CSI_base, private CPosixThread {
public:
    explicit SlotProbe(std::vector<std::string>& calls);
    ~SlotProbe() override;

    void receiveEvent(const stEventParams_t& event) override;
    void onReceiveEvent(unsigned nId, bool bFlag) override;
    void onReceiveEvent(stEventParams_t event) override;
    void convertMemToTag(stEventParams_t& event, const stAppBlocInfo_t& info) override;
    void convertTagToMem(stEventParams_t& event, const stAppBlocInfo_t& info, bool bFlag,
                         const std::string& sText) override;
    void initialize() override;
    void deInitialise() override;
    void run() override;
    void start() override;
    void join() override;

    CPosixThread* threadBase() { return this; }

    // Offsets of m_mapMappings, m_mapServices, m_spParams and m_bStopped in the CSI_base part.
    std::vector<std::ptrdiff_t> hostBaseMemberOffsets() const;

    // Offset of the CPosixThread part in the whole object.
    std::ptrdiff_t threadBaseOffset() const;

private:
    std::vector<std::string>* calls_;
};

}  // namespace layouttest
