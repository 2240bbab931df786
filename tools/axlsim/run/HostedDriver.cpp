// SPDX-License-Identifier: MIT
#include "axlsim/run/HostedDriver.h"

#include <algorithm>
#include <vector>

#include "SI_base.h"
#include "axlsim/base/CaughtException.h"
#include "axlsim/run/HostRecords.h"
#include "orbel/CallScope.h"

namespace axlsim {

namespace {

// The driver reads the first four bytes of an event for an analog output whatever its size, so
// the host's payload always has at least four; what the scenario leaves out reads as 0.
constexpr std::size_t kLeastPayload = 4;

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
    hosting::DriverConfig records = hostRecordsOf(config_);
    hostCall("create", [&] {
        orbel::CallScope creating(nullptr);
        driver_.reset(
            library_.createSiObject(records.params, &records.mappings, &records.services));
    });
    if (driver_ != nullptr) {
        observer_.attach(driver_.get(), index_);
    }
    return driver_ != nullptr;
}

void HostedDriver::initialize() {
    if (driver_ == nullptr) {
        return;
    }
    hostCall("initialize", [this] {
        orbel::CallScope calling(driver_.get());
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
        orbel::CallScope calling(driver_.get());
        driver_->onReceiveEvent(params);
    });
}

void HostedDriver::destroy() {
    if (driver_ == nullptr) {
        return;
    }
    observer_.setHostDriver(index_);
    {
        orbel::CallScope calling(driver_.get());
        driver_.reset();
    }
    observer_.setHostDriver(-1);
}

}  // namespace axlsim
