// SPDX-License-Identifier: MIT
// What running drivers add to a host process, and what an idle driver costs, on the wall clock.
// Loads the driver library with dlopen as a host does, on a virtual controller with an
// AXL F DI8/1 DO8/1 at positions 1 and 3 and an AXL F AI2 AO2 at position 2, and reports
//   - resident memory (VmRSS) and heap in use (malloc) of the process: before the library is
//     loaded, after loading it, and as each of three fully configured drivers starts running
//     (the first also attaches the library to the runtime, once per process);
//   - after the initial publications, an idle run of the given length with the inputs holding
//     still: the CPU time of each driver thread as a share of one core, beside that of a thread
//     that only pauses 100 ms at a time, and of the process.
//
//   axl_footprint [--seconds S] [--heap-only] [--driver PATH]
//
// --heap-only leaves out resident memory and CPU time, which under an emulator are the
// emulator's own.

#include <malloc.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "SI_base.h"
#include "SleepingThread.h"
#include "ThreadCpuClocks.h"
#include "hosting/DriverLibrary.h"
#include "hosting/DriverPtr.h"
#include "hosting/HostCalls.h"
#include "rig/FullyConfigured.h"
#include "rig/Workload.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Station.h"

namespace {

using axlbench::ModuleKind;
using namespace std::chrono_literals;

// The scan pauses 100 ms; the initial publications pause 1 ms each.
constexpr auto kSettling = 1s;
constexpr double kCpuShareTarget = 0.05;

struct Options {
    double seconds = 10.0;
    bool heapOnly = false;
    std::string driver = AXL_DRIVER_PATH;
};

struct Memory {
    long residentKiB = 0;
    long privateDirtyKiB = 0;  // written pages of this process alone: what sharing cannot save
    long heapBytes = 0;
};

long kibFrom(const std::string& line, const char* field) {
    const std::size_t length = std::strlen(field);
    return line.compare(0, length, field) == 0 ? std::stol(line.substr(length)) : -1;
}

Memory memoryNow() {
    Memory memory;
    std::ifstream rollup("/proc/self/smaps_rollup");
    std::string line;
    while (std::getline(rollup, line)) {
        if (const long kib = kibFrom(line, "Rss:"); kib >= 0) {
            memory.residentKiB = kib;
        } else if (const long dirty = kibFrom(line, "Private_Dirty:"); dirty >= 0) {
            memory.privateDirtyKiB = dirty;
        }
    }
    const struct mallinfo2 heap = mallinfo2();
    memory.heapBytes = static_cast<long>(heap.uordblks + heap.hblkhd);
    return memory;
}

double cpuSeconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double processCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return cpuSeconds(usage.ru_utime) + cpuSeconds(usage.ru_stime);
}

void printMemoryHeading(bool heapOnly) {
    std::printf("%-58s %12s %14s %14s\n", "memory of the host process", heapOnly ? "" : "resident",
                heapOnly ? "" : "private dirty", "heap in use");
}

std::string kibText(long kib, const char* format, bool shown) {
    if (!shown) {
        return "";
    }
    char text[32] = {};
    std::snprintf(text, sizeof text, format, kib);
    return std::string(text) + " KiB";
}

// One step: the figures themselves for the first, what the step added for the others.
void printMemoryStep(const char* what, const Memory& now, const Memory* before, bool heapOnly) {
    const Memory base = before != nullptr ? *before : Memory{};
    const char* format = before != nullptr ? "%+ld" : "%ld";
    char heapText[32] = {};
    std::snprintf(heapText, sizeof heapText, format, now.heapBytes - base.heapBytes);
    std::printf("  %-56s %12s %14s %12s B\n", what,
                kibText(now.residentKiB - base.residentKiB, format, !heapOnly).c_str(),
                kibText(now.privateDirtyKiB - base.privateDirtyKiB, format, !heapOnly).c_str(),
                heapText);
}

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--heap-only") {
            options.heapOnly = true;
        } else if (name == "--seconds" && i + 1 < argc) {
            options.seconds = std::stod(argv[++i]);
        } else if (name == "--driver" && i + 1 < argc) {
            options.driver = argv[++i];
        } else {
            return false;
        }
    }
    return options.seconds > 0.0;
}

hosting::DriverPtr<> startDriver(DriverFactory factory, ModuleKind module, int position) {
    hosting::DriverConfig config = axlbench::fullyConfigured(module, position);
    auto driver = hosting::host::create(config, factory);
    hosting::host::initialize(*driver);
    return driver;
}

struct DriverOnBus {
    const char* name;
    ModuleKind module;
    int position;
};

// The first driver also attaches the library to the runtime, once per process; the third shows
// what one more driver of the same module type adds.
constexpr DriverOnBus kDrivers[] = {
    {"first driver (DI8/1 DO8/1 at 1, 16 pins; attaches)", ModuleKind::Digital, 1},
    {"second driver (AI2 AO2 at 2, 4 pins)", ModuleKind::Analog, 2},
    {"third driver (DI8/1 DO8/1 at 3, 16 pins)", ModuleKind::Digital, 3},
};

double percentOf(std::chrono::duration<double> used, std::chrono::duration<double> wall) {
    return used / wall * 100.0;
}

void idleRun(const Options& options, const axlbench::ThreadCpuClocks& clocks,
             const std::vector<hosting::DriverPtr<>>& drivers) {
    axlbench::SleepingThread sleeper;
    std::this_thread::sleep_for(kSettling);
    std::vector<std::chrono::nanoseconds> before;
    for (const hosting::DriverPtr<>& driver : drivers) {
        before.push_back(clocks.cpuTime(driver.get()));
    }
    const std::chrono::nanoseconds sleeperBefore = sleeper.cpuTime();
    const int scansBefore = vplc::calls("ArpPlcAxio_ReadFromAxioToGds");
    const double processBefore = processCpuSeconds();
    const auto start = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(options.seconds));
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    const std::chrono::duration<double> process(processCpuSeconds() - processBefore);
    const int scans = vplc::calls("ArpPlcAxio_ReadFromAxioToGds") - scansBefore;
    const std::chrono::duration<double> sleeping = sleeper.cpuTime() - sleeperBefore;

    std::printf("\nidle run on the wall clock: %.1f s, %d scans in all, inputs holding still\n",
                wall.count(), scans);
    std::printf("  %-52s %10s %12s\n", "", "CPU time", "of a core");
    for (std::size_t i = 0; i < drivers.size(); ++i) {
        const std::chrono::duration<double> used = clocks.cpuTime(drivers[i].get()) - before[i];
        const double share = percentOf(used, wall);
        std::printf("  %-52s %7.3f ms %10.4f %%  (target < %.2f %%: %s)\n", kDrivers[i].name,
                    used.count() * 1e3, share, kCpuShareTarget,
                    share < kCpuShareTarget ? "met" : "missed");
    }
    std::printf("  %-52s %7.3f ms %10.4f %%\n", "a thread that only pauses 100 ms at a time",
                sleeping.count() * 1e3, percentOf(sleeping, wall));
    std::printf("  %-52s %7.3f ms %10.4f %%\n", "whole process", process.count() * 1e3,
                percentOf(process, wall));
}

int run(const Options& options) {
    axlbench::ThreadCpuClocks clocks;
    auto station =
        vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2, vplc::Module::DI8_DO8});
    station.setDigitalInputs(1, 0xA5);
    station.setAnalogInput(2, 0, 12345);
    station.setAnalogInput(2, 1, 23456);
    station.setDigitalInputs(3, 0x5A);

    printMemoryHeading(options.heapOnly);
    Memory last = memoryNow();
    printMemoryStep("host with the virtual controller, no driver library", last, nullptr,
                    options.heapOnly);

    const hosting::DriverLibrary library(options.driver);
    Memory now = memoryNow();
    printMemoryStep("+ driver library loaded (dlopen)", now, &last, options.heapOnly);
    last = now;

    std::vector<hosting::DriverPtr<>> drivers;
    for (const DriverOnBus& driver : kDrivers) {
        drivers.push_back(startDriver(library.factory(), driver.module, driver.position));
        std::this_thread::sleep_for(kSettling);
        now = memoryNow();
        printMemoryStep((std::string("+ ") + driver.name).c_str(), now, &last, options.heapOnly);
        last = now;
    }
    if (clocks.failures() != 0) {
        throw std::runtime_error("a driver did not start as configured");
    }

    if (!options.heapOnly) {
        idleRun(options, clocks, drivers);
    }

    drivers.clear();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    try {
        if (!parse(argc, argv, options)) {
            std::fputs("usage: axl_footprint [--seconds S] [--heap-only] [--driver PATH]\n",
                       stderr);
            return 2;
        }
        return run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "axl_footprint: %s\n", error.what());
        return 1;
    }
}
