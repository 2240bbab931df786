// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "axlsim/configuration/Config.h"
#include "axlsim/run/BusWatch.h"
#include "axlsim/run/Timeline.h"
#include "axlsim/run/TimelineObserver.h"
#include "hosting/DriverLibrary.h"
#include "hosting/DriverPtr.h"

namespace axlsim {

// One driver object, hosted the way the host runtime hosts it: created from the records of its
// configuration, initialised, given events one at a time, and deleted after its thread has been
// ended. Every host call is attributed to the driver; an exception that leaves the driver goes
// on the timeline.
class HostedDriver {
public:
    HostedDriver(int index, const Config::Driver& config, const hosting::DriverLibrary& library,
                 TimelineObserver& observer, Timeline& timeline, const BusWatch& bus);
    ~HostedDriver();
    HostedDriver(const HostedDriver&) = delete;
    HostedDriver& operator=(const HostedDriver&) = delete;

    // False when the factory threw: there is then no driver object.
    bool create();
    void initialize();
    void deliver(const Config::Event& event);

    // Ends the driver's thread, then deletes the driver.
    void destroy();

    bool exists() const { return driver_ != nullptr; }

private:
    template <class Call>
    void hostCall(const char* where, Call call);

    int index_;
    const Config::Driver& config_;
    const hosting::DriverLibrary& library_;
    TimelineObserver& observer_;
    Timeline& timeline_;
    const BusWatch& bus_;
    hosting::DriverPtr<> driver_;
};

}  // namespace axlsim
