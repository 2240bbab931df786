// SPDX-License-Identifier: MIT
#include "SlotProbe.h"

namespace layouttest {

namespace {

std::string describe(const stEventParams_t& event) {
    return std::to_string(event.nId) + " size " + std::to_string(event.nSize);
}

std::ptrdiff_t distance(const void* from, const void* to) {
    return static_cast<const char*>(to) - static_cast<const char*>(from);
}

}  // namespace

SlotProbe::SlotProbe(std::vector<std::string>& calls)
    : CSI_base({}, {}, {}), CPosixThread(0), calls_(&calls) {}

SlotProbe::~SlotProbe() {
    calls_->push_back("~SlotProbe");
}

void SlotProbe::receiveEvent(const stEventParams_t& event) {
    calls_->push_back("receiveEvent " + describe(event));
}

void SlotProbe::onReceiveEvent(unsigned nId, bool bFlag) {
    calls_->push_back("onReceiveEvent(unsigned, bool) " + std::to_string(nId) +
                      (bFlag ? " true" : " false"));
}

void SlotProbe::onReceiveEvent(stEventParams_t event) {
    calls_->push_back("onReceiveEvent(stEventParams_t) " + describe(event));
}

void SlotProbe::convertMemToTag(stEventParams_t& event, const stAppBlocInfo_t& info) {
    calls_->push_back("convertMemToTag " + describe(event) + " " + info.sHostText1);
}

void SlotProbe::convertTagToMem(stEventParams_t& event, const stAppBlocInfo_t& info, bool bFlag,
                                const std::string& sText) {
    calls_->push_back("convertTagToMem " + describe(event) + " " + info.sHostText1 +
                      (bFlag ? " true " : " false ") + sText);
}

void SlotProbe::initialize() {
    calls_->push_back("initialize");
}

void SlotProbe::deInitialise() {
    calls_->push_back("deInitialise");
}

void SlotProbe::run() {
    calls_->push_back("run");
}

void SlotProbe::start() {
    calls_->push_back("start");
}

void SlotProbe::join() {
    calls_->push_back("join");
}

std::vector<std::ptrdiff_t> SlotProbe::hostBaseMemberOffsets() const {
    const CSI_base* base = this;
    return {distance(base, &m_mapMappings), distance(base, &m_mapServices),
            distance(base, &m_spParams), distance(base, &m_bStopped)};
}

std::ptrdiff_t SlotProbe::threadBaseOffset() const {
    const CPosixThread* thread = this;
    return distance(this, thread);
}

}  // namespace layouttest
