// SPDX-License-Identifier: MIT
#include "axlsim/HostedDriver.h"

#include <algorithm>
#include <vector>

#include "SI_base.h"
#include "axlsim/CaughtException.h"
#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"

namespace axlsim {

namespace {

// The driver reads the first four bytes of an event for an analog output whatever its size, so
// the host's payload always has at least four; what the scenario leaves out reads as 0.
constexpr std::size_t kLeastPayload = 4;

stSP_Params_t paramsOf(const Config::Driver& config) {
    stSP_Params_t params;
    params.sName = config.name;
    params.sServiceName = config.serviceName;
    params.sDeviceType = config.deviceType;
    params.mapParams = config.params;
    return params;
}

std::map<unsigned, stMappingElem_t> mappingsOf(const Config::Driver& config) {
    std::map<unsigned, stMappingElem_t> mappings;
    for (const auto& [id, size] : config.mappings) {
        mappings[id].nDataSize = size;
    }
    return mappings;
}

std::map<unsigned, stServiceParams_t> servicesOf(const Config::Driver& config) {
    std::map<unsigned, stServiceParams_t> services;
    for (const auto& [key, service] : config.services) {
        stServiceParams_t& record = services[key];
        record.nEventId = service.eventId;
        record.sName = service.name;
        record.sServiceType = service.type;
        record.mapParams = service.params;
    }
    return services;
}

}  // namespace

HostedDriver::HostedDriver(int index, const Config::Driver& config, const DriverLibrary& library,
                           TimelineObserver& observer, Timeline& timeline, const BusWatch& bus)
    : index_(index),
      config_(config),
      library_(library),
      observer_(observer),
      timeline_(timeline),
      bus_(bus) {}

HostedDriver::~HostedDriver() {
    destroy();
}

template <class Call>
void HostedDriver::hostCall(const char* where, Call call) {
    observer_.setHostDriver(index_);
    const int writes = bus_.writes();
    try {
        call();
    } catch (...) {
        const CaughtException caught = CaughtException::current();
        timeline_.add(index_, Happening::Exception{where, caught.type, caught.what});
    }
    bus_.recordSince(writes, index_);
    observer_.setHostDriver(-1);
}

bool HostedDriver::create() {
    stSP_Params_t params = paramsOf(config_);
    auto mappings = mappingsOf(config_);
    auto services = servicesOf(config_);
    hostCall("create", [&] {
        orbel::CallScope creating(nullptr);
        driver_ = library_.createSiObject(params, &mappings, &services);
    });
    if (driver_ != nullptr) {
        observer_.attach(driver_, index_);
    }
    return driver_ != nullptr;
}

void HostedDriver::initialize() {
    if (driver_ == nullptr) {
        return;
    }
    hostCall("initialize", [this] {
        orbel::CallScope calling(driver_);
        driver_->initialize();
    });
}

void HostedDriver::deliver(const Config::Event& event) {
    if (driver_ == nullptr) {
        timeline_.add(index_, Happening::Note{"not delivered: the driver was not created"});
        return;
    }
    std::vector<uint8_t> payload;
    if (event.payload) {
        payload = *event.payload;
        payload.resize(std::max(payload.size(), kLeastPayload), 0);
    }
    const stEventParams_t params{event.payload ? payload.data() : nullptr, event.id, event.size};
    hostCall("event", [&] {
        orbel::CallScope calling(driver_);
        driver_->onReceiveEvent(params);
    });
}

void HostedDriver::destroy() {
    if (driver_ == nullptr) {
        return;
    }
    CSI_base* driver = driver_;
    driver_ = nullptr;
    observer_.setHostDriver(index_);
    orbel::endDriverThread(*driver);
    {
        orbel::CallScope calling(driver);
        delete driver;
    }
    observer_.setHostDriver(-1);
}

}  // namespace axlsim
