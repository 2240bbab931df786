// SPDX-License-Identifier: MIT
// Loads libplcnext_driver.so the way a host runtime does, creates a driver for an AXL F DI8/1
// DO8/1 module on the virtual controller, and prints what the driver does while the station
// changes, on a virtual clock.
// It hosts by hand, with no helper library, so that every call a host makes is on this page.

#include <dlfcn.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <span>
#include <string>

#include "DriverFactory.h"
#include "HostRecords.h"
#include "SI_base.h"
#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"
#include "orbel/HostObserver.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

namespace {

using namespace std::chrono_literals;

const vplc::VirtualClock* gClock = nullptr;

double nowMs() {
    return gClock == nullptr ? 0.0
                             : std::chrono::duration<double, std::milli>(gClock->now()).count();
}

// Prints every happening with the virtual time at which it happened.
class Printer final : public orbel::HostObserver {
public:
    void logged(const CSI_base*, int level, std::string_view, std::string_view text) override {
        std::printf("%8.1f ms  log L%d    %.*s\n", nowMs(), level, static_cast<int>(text.size()),
                    text.data());
    }
    void published(const CSI_base*, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override {
        std::printf("%8.1f ms  publish   event %u (%u byte%s): %u\n", nowMs(), id, size,
                    size == 1 ? "" : "s", payload.empty() ? 0U : payload[0]);
    }
    void stopped(const CSI_base*, const stServiceParams_t* service,
                 std::string_view message) override {
        std::printf("%8.1f ms  stopped   %s%.*s\n", nowMs(),
                    service != nullptr ? "service: " : "driver: ", static_cast<int>(message.size()),
                    message.data());
    }
    void threadStarted(const CSI_base*) override {
        std::printf("%8.1f ms  thread    the driver's scan thread started\n", nowMs());
    }
    void threadEnded(const CSI_base*, std::string_view how) override {
        std::printf("%8.1f ms  thread    the scan thread ended (%.*s)\n", nowMs(),
                    static_cast<int>(how.size()), how.data());
    }
};

std::string driverPath() {
    char path[4096];
    ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    std::string self(path, length < 0 ? 0 : static_cast<std::size_t>(length));
    return self.substr(0, self.rfind('/') + 1) + "../lib/libplcnext_driver.so";
}

stServiceParams_t service(uint32_t eventId, const char* type,
                          std::map<std::string, std::string> params) {
    stServiceParams_t s;
    s.nEventId = eventId;
    s.sServiceType = type;
    s.mapParams = std::move(params);
    return s;
}

void say(const char* what) {
    std::printf("\n%8.1f ms  -- %s\n", nowMs(), what);
}

}  // namespace

int main(int argc, char** argv) {
    std::string path = argc > 1 ? argv[1] : driverPath();
    void* library = dlopen(path.c_str(), RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "cannot load the driver: %s\n", dlerror());
        return 2;
    }
    auto createSiObject = reinterpret_cast<DriverFactory>(dlsym(library, kDriverFactorySymbol));
    if (createSiObject == nullptr) {
        std::fprintf(stderr, "%s has no CreateSiObject\n", path.c_str());
        return 2;
    }

    Printer printer;
    orbel::addObserver(printer);
    vplc::VirtualClock clock;
    gClock = &clock;
    auto station = vplc::Station::builder().module(vplc::Module::DI8_DO8).build();

    std::printf(
        "An AXL F DI8/1 DO8/1 at bus position 1. Inputs 0 and 1 are published as events\n"
        "100 and 101, event 200 drives output 3, event 300 restarts the controller.\n");

    stSP_Params_t params;
    params.sName = "axl1";
    params.sServiceName = "IO1";
    params.sDeviceType = "AXL_F_DI8_1_DO8_1";
    params.mapParams["Consecutive Number"] = "1";
    std::map<unsigned, stMappingElem_t> mappings;
    for (unsigned id : {100U, 101U, 200U, 300U}) {
        mappings[id].nDataSize = 1;
    }
    std::map<unsigned, stServiceParams_t> services{
        {1, service(100, "DigitalIn", {{"PinNum", "0"}})},
        {2, service(101, "DigitalIn", {{"PinNum", "1"}})},
        {3, service(200, "DigitalOut", {{"PinNum", "3"}, {"InitVal", "0"}})},
        {4, service(300, "RestartDevice", {})}};

    say("the host creates the driver");
    CSI_base* driver = nullptr;
    {
        orbel::CallScope creating(nullptr);
        driver = createSiObject(params, &mappings, &services);
    }
    say("the host initialises it: attach to the runtime, register the services, start the scan");
    {
        orbel::CallScope calling(driver);
        driver->initialize();
    }
    clock.runUntil(250ms);

    say("input 1 goes on at the terminal");
    station.setDigitalInput(1, 1, true);
    clock.runUntil(500ms);

    say("the host sends event 200 with the value 1");
    uint8_t on = 1;
    {
        orbel::CallScope calling(driver);
        driver->onReceiveEvent(stEventParams_t{&on, 200, 1});
    }
    std::printf("%8.1f ms  bus       output byte of module 1 is now 0x%02X\n", nowMs(),
                station.digitalOutputsOnBus(1));

    say("the host sends event 300");
    {
        orbel::CallScope calling(driver);
        driver->onReceiveEvent(stEventParams_t{&on, 300, 1});
    }
    std::printf("%8.1f ms  runtime   the virtual controller has restarted %d time(s)\n", nowMs(),
                vplc::Runtime::restarts());
    clock.runUntil(700ms);

    say("the host ends the driver's thread and deletes the driver");
    orbel::destroyDriver(driver);
    orbel::removeObserver(printer);
    return 0;
}
