// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <mutex>
#include <ostream>
#include <string>
#include <thread>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "Arp/System/Core/AppDomain.hpp"
#include "Arp/System/Core/Arp.h"
#include "ArpModuleLoader.h"
#include "hosting/ChildProcess.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"

using hosting::runInChild;
using vplc::Runtime;

namespace {

constexpr const char* kLoadSettings = "/opt/run/./Default.acf.settings";

bool plcHasStarted() {
    std::lock_guard<std::mutex> lock(plcStateMutex);
    return plcStarted;
}

std::string selfDirectory() {
    char path[4096];
    ssize_t length = readlink("/proc/self/exe", path, sizeof(path) - 1);
    path[length < 0 ? 0 : length] = '\0';
    std::string text(path);
    return text.substr(0, text.rfind('/') + 1);
}

// Initialises the loader in a child after `prepare` has set up the runtime there; the child
// exits with 0 if the loader set its error status and returned.
hosting::ChildResult initializeInChild(void (*prepare)()) {
    return runInChild([prepare] {
        prepare();
        ArpModuleLoader::initialize();
        return ArpModuleLoader::m_bErrorStatus ? 0 : 1;
    });
}

}  // namespace

TEST(ModuleLoad, ADomainGivesResult0AndBecomesTheProcessDomain) {
    auto child = runInChild([] {
        int result = ArpSystemModule_Load("/usr/lib", "tarnwick", kLoadSettings);
        Runtime::waitUntilDelivered();
        bool domainSet = Arp::Singleton<Arp::AppDomain>::pInstance != nullptr;
        auto assignments = Runtime::domainAssignments();
        bool assigned = assignments.size() == 2 &&
                        assignments[0].manager == Runtime::Manager::Log &&
                        assignments[1].manager == Runtime::Manager::Rsc &&
                        assignments[0].domain == Arp::Singleton<Arp::AppDomain>::pInstance &&
                        assignments[1].domain == Arp::Singleton<Arp::AppDomain>::pInstance;
        return result == 0 && domainSet && assigned ? 0 : 1;
    });
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.output, "");
}

TEST(ModuleLoad, AProcessDomainSetBeforeTheLoadIsKeptAndTheManagersGetTheLoadedOne) {
    auto child = runInChild([] {
        static Arp::AppDomain earlier;
        Arp::Singleton<Arp::AppDomain>::pInstance = &earlier;
        int result = ArpSystemModule_Load("/usr/lib", "tarnwick", kLoadSettings);
        Runtime::waitUntilDelivered();
        bool domainKept = Arp::Singleton<Arp::AppDomain>::pInstance == &earlier;
        auto assignments = Runtime::domainAssignments();
        bool assigned = assignments.size() == 2 && assignments[0].domain != nullptr &&
                        assignments[0].domain != &earlier &&
                        assignments[1].domain == assignments[0].domain;
        return result == 0 && domainKept && assigned ? 0 : 1;
    });
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.output, "");
}

// How the module's main ends, set up in the child before the load, and what the load then
// returns and prints.
struct LoadOutcome {
    const char* name;
    void (*mainEnds)();
    int result;
    const char* output;
    // A case shows as its name, also in the names of the tests.
    friend std::ostream& operator<<(std::ostream& out, const LoadOutcome& row) {
        return out << row.name;
    }
};

class ModuleLoadEnding : public testing::TestWithParam<LoadOutcome> {};

TEST_P(ModuleLoadEnding, GivesItsResultAndLine) {
    const auto child = runInChild([mainEnds = GetParam().mainEnds] {
        mainEnds();
        return ArpSystemModule_Load("/usr/lib", "tarnwick", kLoadSettings);
    });
    EXPECT_EQ(child.exitCode, GetParam().result);
    EXPECT_EQ(child.output, GetParam().output);
}

INSTANTIATE_TEST_SUITE_P(
    ModuleLoad, ModuleLoadEnding,
    testing::Values(
        LoadOutcome{"ANullDomainGivesResult3WithoutALine",
                    [] { Runtime::setModuleMain(Runtime::MainOutcome::NullDomain); }, 3, ""},
        LoadOutcome{"AnArpExceptionPrintsItsLineAndGivesResult4",
                    [] {
                        vplc::inject(Runtime::kModuleMain,
                                     vplc::Fault::next("settings file not found"));
                    },
                    4,
                    "Exception of type Arp::Exception occured during call of "
                    "ArpSystemModule_Load : settings file not found\n"},
        LoadOutcome{
            "AStandardExceptionPrintsItsLineAndGivesResult4",
            [] { Runtime::setModuleMain(Runtime::MainOutcome::StdException, "bad settings"); }, 4,
            "Exception of type std::exception occured during call of "
            "ArpSystemModule_Load : bad settings\n"},
        LoadOutcome{"AnExceptionOfAnotherTypePrintsItsLineAndGivesResult4",
                    [] { Runtime::setModuleMain(Runtime::MainOutcome::UnknownException); }, 4,
                    "Exception of unknown type occured during call of ArpSystemModule_Load\n"}),
    [](const testing::TestParamInfo<LoadOutcome>& info) { return std::string(info.param.name); });

TEST(ModuleLoader, ANullDomainSetsTheErrorStatusAndDoesNotWait) {
    const auto child =
        initializeInChild([] { Runtime::setModuleMain(Runtime::MainOutcome::NullDomain); });
    EXPECT_EQ(child.exitCode, 0);
}

TEST(ModuleLoader, AnExceptionSetsTheErrorStatusAndDoesNotWait) {
    const auto child = initializeInChild(
        [] { Runtime::setModuleMain(Runtime::MainOutcome::StdException, "no runtime"); });
    EXPECT_EQ(child.exitCode, 0);
    EXPECT_EQ(child.output,
              "Exception of type std::exception occured during call of ArpSystemModule_Load : "
              "no runtime\n");
}

TEST(ModuleLoader, LoadsTarnwickWithTheSettingsFileBesideTheExecutable) {
    auto child = runInChild([] {
        ArpModuleLoader::initialize();
        auto calls = Runtime::moduleMainCalls();
        Runtime::MainCall expected{"tarnwick", selfDirectory() + "./Default.acf.settings"};
        return calls.size() == 1 && calls[0] == expected && !ArpModuleLoader::m_bErrorStatus ? 0
                                                                                             : 1;
    });
    EXPECT_EQ(child.exitCode, 0);
}

TEST(ModuleLoader, LoadsOncePerProcess) {
    auto child = runInChild([] {
        ArpModuleLoader::initialize();
        ArpModuleLoader::initialize();
        return static_cast<int>(Runtime::moduleMainCalls().size());
    });
    EXPECT_EQ(child.exitCode, 1);
}

class StartOperation : public testing::TestWithParam<PlcOperation> {};

TEST_P(StartOperation, ReleasesTheLoadersWait) {
    PlcOperation operation = GetParam();
    auto child = runInChild([operation] {
        Runtime::setStartOperations({operation});
        ArpModuleLoader::initialize();
        return plcHasStarted() && !ArpModuleLoader::m_bErrorStatus ? 0 : 1;
    });
    EXPECT_EQ(child.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(ColdWarmAndHot, StartOperation,
                         testing::Values(PlcOperation_StartCold, PlcOperation_StartWarm,
                                         PlcOperation_StartHot));

TEST(ModuleLoader, OperationsOtherThanStartsLeaveItWaiting) {
    auto child = runInChild([] {
        // The handler is registered before the runtime is loaded, as the loader does, so that
        // every operation finds it; the loader itself then waits for the start.
        ArpPlcDomain_SetHandler(PlcOperationHandler);
        Runtime::setStartOperations({PlcOperation_None, PlcOperation_Load, PlcOperation_Setup,
                                     PlcOperation_Stop, PlcOperation_Reset, PlcOperation_Unload});
        if (ArpSystemModule_Load("/usr/lib", "tarnwick", kLoadSettings) != 0) {
            return 2;
        }
        Runtime::waitUntilDelivered();
        bool startedEarly = plcHasStarted();
        std::thread loader([] { ArpModuleLoader::initialize(); });
        Runtime::deliver(PlcOperation_StartWarm);
        loader.join();
        return !startedEarly && plcHasStarted() ? 0 : 1;
    });
    EXPECT_EQ(child.exitCode, 0);
}

TEST(ModuleLoader, AStartReportedBeforeTheWaitDoesNotBlockIt) {
    auto child = runInChild([] {
        PlcOperationHandler(PlcOperation_StartCold);
        Runtime::setStartOperations({});
        ArpModuleLoader::initialize();
        return 0;
    });
    EXPECT_EQ(child.exitCode, 0);
}

TEST(PlcOperationHandler, OnlyTheThreeStartOperationsSetTheStartedFlag) {
    for (int value : {0, 1, 2, 6, 7, 8, 9}) {
        auto child = runInChild([value] {
            PlcOperationHandler(static_cast<PlcOperation>(value));
            return plcHasStarted() ? 1 : 0;
        });
        EXPECT_EQ(child.exitCode, 0) << "operation " << value;
    }
    for (int value : {3, 4, 5}) {
        auto child = runInChild([value] {
            PlcOperationHandler(static_cast<PlcOperation>(value));
            return plcHasStarted() ? 1 : 0;
        });
        EXPECT_EQ(child.exitCode, 1) << "operation " << value;
    }
}

TEST(ExecutableDirectory, EndsWithTheLastSeparator) {
    EXPECT_EQ(ArpModuleLoader::directoryOf("/opt/run/host"), "/opt/run/");
    EXPECT_EQ(ArpModuleLoader::directoryOf("C:\\run\\host.exe"), "C:\\run\\");
    EXPECT_EQ(ArpModuleLoader::directoryOf("/opt\\run/host"), "/opt\\run/");
}

TEST(ExecutableDirectory, APathWithoutSeparatorIsKeptWhole) {
    EXPECT_EQ(ArpModuleLoader::directoryOf("host"), "host");
    EXPECT_EQ(ArpModuleLoader::directoryOf("host") + "./Default.acf.settings",
              "host./Default.acf.settings");
}
