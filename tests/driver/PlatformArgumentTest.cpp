// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "ExposedDriver.h"
#include "PosixThread.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "vplc/Runtime.h"
#include "vplc/Station.h"

using testsupport::ExposedDriver;
using namespace hosting;
using namespace std::chrono_literals;

namespace {

// The arguments of every bus transfer made in this program. The program's own definitions of the
// two transfer functions come before the virtual controller's for every caller, the driver's
// objects included; each records its argument and hands the call on.
struct Transfer {
    std::string function;
    unsigned long argument;
};
std::mutex transfersMutex;
std::vector<Transfer> transfers;

bool transfer(const char* function, unsigned long argument) {
    {
        std::lock_guard<std::mutex> lock(transfersMutex);
        transfers.push_back({function, argument});
    }
    using Function = bool (*)(unsigned long);
    auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, function));
    return next(argument);
}

std::vector<Transfer> transfersMade() {
    std::lock_guard<std::mutex> lock(transfersMutex);
    return transfers;
}

void forgetTransfers() {
    std::lock_guard<std::mutex> lock(transfersMutex);
    transfers.clear();
}

// The argument a thread base was made with: the host keeps it as given, as the first member
// after the virtual table pointer.
long threadArgumentOf(const CPosixThread& thread) {
    long argument = 0;
    std::memcpy(&argument, reinterpret_cast<const unsigned char*>(&thread) + sizeof(void*),
                sizeof argument);
    return argument;
}

class ThreadWithArgument : public CPosixThread {
public:
    explicit ThreadWithArgument(long argument) : CPosixThread(argument) {}
    void run() override {}
};

}  // namespace

extern "C" bool ArpPlcAxio_ReadFromAxioToGds(unsigned long timeoutMs) {
    return transfer("ArpPlcAxio_ReadFromAxioToGds", timeoutMs);
}

extern "C" bool ArpPlcAxio_WriteFromGdsToAxio(unsigned long timeoutMs) {
    return transfer("ArpPlcAxio_WriteFromGdsToAxio", timeoutMs);
}

TEST(PlatformArguments, EveryBusTransferOfTheDriverPasses0) {
    forgetTransfers();
    {
        DriverRig rig({vplc::Module::DI8_DO8});
        CSI_base& driver = rig.create(
            DriverConfig::digital().digitalIn(10, "0").digitalOut(20, "1", "1").restart(30));
        host::initialize(driver);
        rig.clock().runUntil(250ms);
        host::deliver(driver, 20, {0});
        host::deliver(driver, 30, {0});
        host::deliver(driver, 99, {0});
        ASSERT_EQ(vplc::Runtime::restarts(), 1);
        ASSERT_EQ(rig.recorder().stops(&driver).size(), 1u);
    }

    // initialize, the initial publication and three passes read; initialize, the output event,
    // the restart and the unsubscribed event write.
    int reads = 0;
    int writes = 0;
    for (const auto& made : transfersMade()) {
        EXPECT_EQ(made.argument, 0u) << made.function;
        (made.function == "ArpPlcAxio_ReadFromAxioToGds" ? reads : writes) += 1;
    }
    EXPECT_EQ(reads, 5);
    EXPECT_EQ(writes, 4);
}

TEST(PlatformArguments, TheHostKeepsTheArgumentItsThreadBaseIsMadeWith) {
    const ThreadWithArgument thread(7);

    EXPECT_EQ(threadArgumentOf(thread), 7);
}

TEST(PlatformArguments, TheDriverMakesItsThreadBaseWithArgument0) {
    auto station = vplc::Station::of({vplc::Module::DI8_DO8});
    const ExposedDriver driver(DriverConfig::digital());
    // A C-style cast, because the thread base is private.
    const auto& thread = (const CPosixThread&)driver;

    EXPECT_EQ(threadArgumentOf(thread), 0);
}
