// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"

namespace Arp {
class AppDomain;
}

namespace vplc {

// The virtual controller's Arp runtime: the system module (ArpSystemModuleMain), the log and
// RSC managers, the PLC operation notifications and the device-control service. Process-wide,
// like the runtime it stands for; reset() brings back the defaults between tests.
//
// Each entry point of the runtime libraries reports itself to the controller's call accounting
// under the names below (vplc/PlatformCalls.h): vplc::calls(name) counts its calls, and a fault
// injected with vplc::inject(name, fault) makes the call throw Arp::Exception with the fault's
// text, the way the platform's runtime fails.
//
//   vplc::inject(vplc::Runtime::kRestartDevice, vplc::Fault::next("Device is busy"));
//   vplc::Runtime::setServiceLookup(vplc::Runtime::Lookup::NoService);
class Runtime {
public:
    static constexpr std::string_view kModuleMain = "ArpSystemModuleMain";
    static constexpr std::string_view kLogAssignAppDomain = "LogManager::AssignAppDomain";
    static constexpr std::string_view kRscAssignAppDomain = "RscManager::AssignAppDomain";
    static constexpr std::string_view kGetService = "ServiceManager::GetService";
    static constexpr std::string_view kRestartDevice = "IDeviceControlService::RestartDevice";
    static constexpr std::string_view kResetToFactoryDefaults =
        "IDeviceControlService::ResetToFactoryDefaults";

    // --- ArpSystemModuleMain: what it does, and the arguments it was called with. A fault
    // injected under kModuleMain makes it throw Arp::Exception instead.
    enum class MainOutcome {
        Domain,            // returns the process's application domain (default)
        NullDomain,        // returns null
        StdException,      // throws std::runtime_error with the text as its what()
        UnknownException,  // throws the int kUnknownExceptionValue
    };
    static constexpr int kUnknownExceptionValue = 42;

    struct MainCall {
        std::string applicationName;
        std::string settingsPath;
        bool operator==(const MainCall&) const = default;
    };

    static void setModuleMain(MainOutcome outcome, std::string text = "");
    static std::vector<MainCall> moduleMainCalls();

    // --- PLC operations. Every ArpSystemModuleMain that returns a domain queues the start
    // operations (default: one PlcOperation_StartCold). The runtime's own thread delivers queued
    // operations in order to the handler registered through ArpPlcDomain_SetHandler at the time
    // of delivery; an operation that finds no handler is dropped.
    static void setStartOperations(std::vector<PlcOperation> operations);
    static void deliver(PlcOperation operation);
    // Blocks until every queued operation has been delivered and its handler has returned. Not
    // from within a handler.
    static void waitUntilDelivered();

    // --- AssignAppDomain of the log manager and the RSC manager, in call order.
    enum class Manager { Log, Rsc };
    struct Assignment {
        Manager manager;
        const Arp::AppDomain* domain;
        bool operator==(const Assignment&) const = default;
    };
    static std::vector<Assignment> domainAssignments();

    // --- The device-control service. ServiceManager::GetService("Arp", factory) makes a new
    // service object on each call.
    enum class Lookup {
        Normal,             // the service, as requested
        EmptyProviderName,  // the factory names the provider ""
        NullProviderName,   // the factory names no provider (null)
        NoService,          // the lookup finds no service
        WrongType,          // the lookup returns a service that is not an IDeviceControlService
    };
    static void setServiceLookup(Lookup lookup);

    // Restarts leave the Axioline bus as it is: a real restart would drop the outputs, but tests
    // of the bus observe the driver's own platform calls, which a restart must not add to. A tool
    // that wants the reboot to show does it from the observer, which runs on the thread that
    // called RestartDevice, after the restart has been counted.
    static void setRestartObserver(std::function<void()> observer);

    static int restarts();  // RestartDevice calls that restarted the controller
    static int factoryResets();
    static int servicesMade();
    static int liveServices();  // service objects made and not yet destroyed

    // Waits until queued operations are delivered, then brings back the defaults and clears the
    // records and counters above. The live-service count stays: it counts objects that still
    // exist. Call counts and faults are the controller's and are reset there.
    static void reset();
};

}  // namespace vplc
