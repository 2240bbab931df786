// SPDX-License-Identifier: MIT
#include "SI_base.h"

#include <span>
#include <utility>

#include "DriverRegistry.h"
#include "ObserverHub.h"
#include "orbel/CallScope.h"
#include "orbel/StopFlag.h"

CSI_base::CSI_base(stSP_Params_t spParams, std::map<unsigned, stMappingElem_t> mapMappings,
                   std::map<unsigned, stServiceParams_t> mapServices)
    : m_mapMappings(std::move(mapMappings)),
      m_mapServices(std::move(mapServices)),
      m_spParams(std::move(spParams)),
      m_bStopped(false) {
    orbel::DriverRegistry::instance().add(*this, m_spParams.sServiceName);
    orbel::CallScope::bindCreated(this);
}

CSI_base::~CSI_base() {
    orbel::DriverRegistry::instance().remove(*this);
}

void CSI_base::receiveEvent(const stEventParams_t& event) {
    // Whatever the driver logs while it handles the event is its own.
    orbel::CallScope scope(this);
    onReceiveEvent(event);
}

void CSI_base::convertMemToTag(stEventParams_t&, const stAppBlocInfo_t&) {}

void CSI_base::convertTagToMem(stEventParams_t&, const stAppBlocInfo_t&, bool, const std::string&) {
}

void CSI_base::deInitialise() {}

void CSI_base::publishEvent(const stEventParams_t& event) {
    std::span<const uint8_t> payload;
    if (event.pData != nullptr) {
        payload = std::span<const uint8_t>(event.pData, event.nSize);
    }
    orbel::ObserverHub::instance().report(
        [&](orbel::HostObserver& o) { o.published(this, event.nId, event.nSize, payload); });
}

void CSI_base::stopWithError(const stServiceParams_t& service, const std::string& sMessage) {
    if (orbel::stopSetsStopFlag()) {
        m_bStopped = true;
    }
    orbel::ObserverHub::instance().report(
        [&](orbel::HostObserver& o) { o.stopped(this, &service, sMessage); });
}

void CSI_base::stopWithError(const std::string& sMessage) {
    if (orbel::stopSetsStopFlag()) {
        m_bStopped = true;
    }
    orbel::ObserverHub::instance().report(
        [&](orbel::HostObserver& o) { o.stopped(this, nullptr, sMessage); });
}
