// SPDX-License-Identifier: MIT
#include "OperationDelivery.h"

#include "vplc/PlcDomain.h"

namespace vplc {

OperationDelivery::~OperationDelivery() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void OperationDelivery::deliver(const std::vector<PlcOperation>& operations) {
    if (operations.empty()) {
        return;
    }
    {
        std::lock_guard lock(mutex_);
        queue_.insert(queue_.end(), operations.begin(), operations.end());
        if (!thread_.joinable()) {
            thread_ = std::thread(&OperationDelivery::run, this);
        }
    }
    changed_.notify_all();
}

void OperationDelivery::waitUntilDelivered() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return queue_.empty() || stopping_; });
}

void OperationDelivery::run() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return !queue_.empty() || stopping_; });
        if (stopping_) {
            return;
        }
        PlcOperation operation = queue_.front();
        lock.unlock();
        // Looked up at delivery, so a handler registered after the operation was queued gets it.
        if (ArpPlcDomainHandler handler = plcOperationHandler()) {
            handler(operation);
        }
        lock.lock();
        queue_.pop_front();
        if (queue_.empty()) {
            changed_.notify_all();
        }
    }
}

}  // namespace vplc
