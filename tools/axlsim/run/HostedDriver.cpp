// SPDX-License-Identifier: MIT
#include "axlsim/run/HostedDriver.h"

#include <vector>

#include "SI_base.h"
#include "axlsim/base/CaughtException.h"
#include "axlsim/run/HostRecords.h"
#include "hosting/HostCalls.h"

namespace axlsim {

HostedDriver::HostedDriver(int index, const Config::Driver& config,
                           const hosting::DriverLibrary& library, TimelineObserver& observer,
                           Timeline& timeline, const BusWatch& bus)
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
    hostCall("create", [&] { driver_ = hosting::host::create(records, library_.factory()); });
    if (driver_ != nullptr) {
        observer_.attach(driver_.get(), index_);
    }
    return driver_ != nullptr;
}

void HostedDriver::initialize() {
    if (driver_ == nullptr) {
        return;
    }
    hostCall("initialize", [this] { hosting::host::initialize(*driver_); });
}

void HostedDriver::deliver(const Config::Event& event) {
    if (driver_ == nullptr) {
        timeline_.add(index_, Happening::Note{"not delivered: the driver was not created"});
        return;
    }
    hostCall("event", [&] {
        if (!event.payload) {
            hosting::host::deliverNull(*driver_, event.id, event.size);
            return;
        }
        // What the scenario leaves out of the host's least payload reads as 0.
        std::vector<uint8_t> payload = *event.payload;
        hosting::host::deliver(*driver_, event.id, payload, event.size);
    });
}

void HostedDriver::destroy() {
    if (driver_ == nullptr) {
        return;
    }
    observer_.setHostDriver(index_);
    hosting::host::destroy(driver_);
    observer_.setHostDriver(-1);
}

}  // namespace axlsim
