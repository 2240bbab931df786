// SPDX-License-Identifier: MIT
#include "OperationRecorder.h"

#include <mutex>

namespace {

std::mutex recordMutex;
std::vector<OperationRecorder::Delivery> recorded;

}  // namespace

void OperationRecorder::handle(PlcOperation operation) {
    std::lock_guard lock(recordMutex);
    recorded.push_back({operation, std::this_thread::get_id()});
}

std::vector<OperationRecorder::Delivery> OperationRecorder::deliveries() {
    std::lock_guard lock(recordMutex);
    return recorded;
}

std::vector<PlcOperation> OperationRecorder::operations() {
    std::vector<PlcOperation> operations;
    for (const Delivery& delivery : deliveries()) {
        operations.push_back(delivery.operation);
    }
    return operations;
}

void OperationRecorder::clear() {
    std::lock_guard lock(recordMutex);
    recorded.clear();
}
