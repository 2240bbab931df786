// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "ThreadState.h"

class CPosixThread;

namespace orbel {

// The ThreadState of every live CPosixThread of the process.
class ThreadRegistry {
public:
    static ThreadRegistry& instance();

    ThreadState& add(CPosixThread& owner);

    // Forgets the owner's state and hands it over, so that its thread can still be ended.
    std::shared_ptr<ThreadState> remove(const CPosixThread& owner);

    // The state whose thread was started for the complete object at `object`, or null.
    std::shared_ptr<ThreadState> startedFor(const void* object) const;

    std::vector<std::shared_ptr<ThreadState>> all() const;

private:
    ThreadRegistry() = default;

    mutable std::mutex mutex_;
    std::map<const CPosixThread*, std::shared_ptr<ThreadState>> threads_;
};

}  // namespace orbel
