// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "EventClient.h"
#include "HostRecords.h"

namespace layouttest {

// An event client whose virtual operations only note that they ran, with their arguments.
class EventClientProbe : public CEventClient {
public:
    explicit EventClientProbe(std::vector<std::string>& calls);
    ~EventClientProbe() override;

    void receiveEvent(const stEventParams_t& event) override;
    void onReceiveEvent(unsigned nId, bool bFlag) override;

private:
    std::vector<std::string>* calls_;
};

}  // namespace layouttest
