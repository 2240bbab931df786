// SPDX-License-Identifier: MIT
#pragma once

#include <thread>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"

// A PLC operation handler that remembers what it was told and on which thread.
class OperationRecorder {
public:
    struct Delivery {
        PlcOperation operation;
        std::thread::id thread;
    };

    static void handle(PlcOperation operation);
    static std::vector<Delivery> deliveries();
    static std::vector<PlcOperation> operations();
    static void clear();
};
