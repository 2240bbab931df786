// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"

// Attaches the library to the controller's runtime ("Arp") once per process and waits until
// the PLC has started.
class ArpModuleLoader {
public:
    // Performs the attachment on the first call (blocking until the PLC has started or the load
    // has failed); later calls return at once.
    static void initialize();

    // Set when the runtime could not be loaded.
    static bool m_bErrorStatus;

    virtual ~ArpModuleLoader();

    // Directory of the running executable, with its trailing separator.
    std::string ArpGetSelfPath();

    // The part of an executable's path up to and including its last separator ('/' or '\\'); the
    // whole path when it has none.
    static std::string directoryOf(const std::string& sPath);

private:
    ArpModuleLoader();
};

// Process-wide state of the attachment: plcStarted is set once the runtime has reported a start
// operation and is never reset; the mutex guards it.
extern std::mutex plcStateMutex;
extern std::condition_variable plcStartCondition;
extern bool plcStarted;

// Called by the runtime on every PLC operation; releases the loader's wait on a start.
void PlcOperationHandler(PlcOperation operation);

// Attaches the Arp system module: 0 on success, 3 when the runtime gives no application domain, 4
// when the runtime threw (a line on standard output names the exception).
extern "C" __attribute__((visibility("default"))) int ArpSystemModule_Load(
    const char* binaryDirectory, const char* applicationName, const char* acfSettingsPath);
