// SPDX-License-Identifier: MIT
// A host program for a driver built against a controller SDK: loads the driver library named on
// the command line, runs one driver on the virtual controller (create, initialise, an input
// published, an output on the bus, delete) and prints where each Arp library was loaded from, so
// that the caller can tell that the driver brought its own platform libraries along.

#include <dlfcn.h>
#include <link.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "hosting/DriverConfig.h"
#include "hosting/DriverLibrary.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

namespace {

using namespace std::chrono_literals;
namespace host = hosting::host;

constexpr unsigned kInputEvent = 100;
constexpr unsigned kOutputEvent = 200;

// The file a loaded library came from, or "not loaded".
std::string loadedFrom(const char* soname) {
    void* handle = dlopen(soname, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) {
        return "not loaded";
    }
    const link_map* map = nullptr;
    std::string path = dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : "unknown";
    dlclose(handle);
    return path;
}

bool check(bool condition, const char* what) {
    std::printf("%s: %s\n", condition ? "ok" : "FAILED", what);
    return condition;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s DRIVER_LIBRARY\n", argv[0]);
        return 2;
    }
    std::unique_ptr<hosting::DriverLibrary> library;
    try {
        library = std::make_unique<hosting::DriverLibrary>(argv[1]);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }

    hosting::DriverRig rig({vplc::Module::DI8_DO8});
    const orbel::Recorder& recorder = rig.recorder();
    const vplc::Station& station = rig.station();
    rig.station().setDigitalInput(1, 0, true);

    auto records = hosting::DriverConfig::digital()
                       .digitalIn(kInputEvent, "0")
                       .digitalOut(kOutputEvent, "3", "0");

    CSI_base& owned = rig.create(records, library->factory());
    const CSI_base* driver = &owned;
    host::initialize(owned);
    rig.clock().runUntil(50ms);
    host::deliver(owned, kOutputEvent, {1});

    const std::vector<orbel::Publication> published = recorder.published(driver);
    bool passed = true;
    passed &= check(!published.empty() && published.front().id == kInputEvent &&
                        published.front().bytes == std::vector<uint8_t>{1},
                    "input 0 of the module was published as on");
    passed &= check(station.digitalOutputsOnBus(1) == 0x08, "output 3 of the module is on the bus");
    passed &= check(recorder.stops(driver).empty(), "the driver did not stop with an error");

    rig.destroy();
    for (const char* soname : {"libArp.Plc.AnsiC.so", "libArp.System.Commons.so",
                               "libArp.System.Rsc.so", "libArp.System.Module.so"}) {
        std::printf("%s loaded from %s\n", soname, loadedFrom(soname).c_str());
    }
    return passed ? 0 : 1;
}
