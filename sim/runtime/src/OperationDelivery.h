// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"

namespace vplc {

// The runtime's thread that reports PLC operations to the registered handler, one at a time and
// in the order they were queued. The thread starts with the first operation.
class OperationDelivery {
public:
    OperationDelivery() = default;
    OperationDelivery(const OperationDelivery&) = delete;
    OperationDelivery& operator=(const OperationDelivery&) = delete;
    // Drops what is still queued and ends the thread.
    ~OperationDelivery();

    void deliver(const std::vector<PlcOperation>& operations);
    void waitUntilDelivered();

private:
    void run();

    std::mutex mutex_;
    std::condition_variable changed_;
    // An operation leaves the queue only after its handler has returned.
    std::deque<PlcOperation> queue_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace vplc
