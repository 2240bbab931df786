// SPDX-License-Identifier: MIT
#include "EventClientProbe.h"

namespace layouttest {

EventClientProbe::EventClientProbe(std::vector<std::string>& calls) : calls_(&calls) {}

EventClientProbe::~EventClientProbe() {
    calls_->push_back("~EventClientProbe");
}

void EventClientProbe::receiveEvent(const stEventParams_t& event) {
    calls_->push_back("receiveEvent " + std::to_string(event.nId));
}

void EventClientProbe::onReceiveEvent(unsigned nId, bool bFlag) {
    calls_->push_back("onReceiveEvent(unsigned, bool) " + std::to_string(nId) +
                      (bFlag ? " true" : " false"));
}

}  // namespace layouttest
