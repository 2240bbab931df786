#pragma once

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

private:
    ArpModuleLoader();
};

// Called by the runtime on every PLC operation; releases the loader's wait on a start.
void PlcOperationHandler(PlcOperation operation);
