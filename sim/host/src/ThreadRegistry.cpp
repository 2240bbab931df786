// SPDX-License-Identifier: MIT
#include "ThreadRegistry.h"

namespace orbel {

ThreadRegistry& ThreadRegistry::instance() {
    // Never destroyed: driver threads may outlive the library's static objects at exit.
    static ThreadRegistry* const registry = new ThreadRegistry;
    return *registry;
}

ThreadState& ThreadRegistry::add(CPosixThread& owner) {
    auto state = std::make_shared<ThreadState>(owner);
    std::lock_guard lock(mutex_);
    threads_.insert_or_assign(&owner, state);
    return *state;
}

std::shared_ptr<ThreadState> ThreadRegistry::remove(const CPosixThread& owner) {
    std::lock_guard lock(mutex_);
    auto found = threads_.find(&owner);
    if (found == threads_.end()) {
        return nullptr;
    }
    std::shared_ptr<ThreadState> state = std::move(found->second);
    threads_.erase(found);
    return state;
}

std::shared_ptr<ThreadState> ThreadRegistry::startedFor(const void* object) const {
    std::lock_guard lock(mutex_);
    for (const auto& [owner, state] : threads_) {
        if (state->object() == object) {
            return state;
        }
    }
    return nullptr;
}

std::vector<std::shared_ptr<ThreadState>> ThreadRegistry::all() const {
    std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<ThreadState>> states;
    states.reserve(threads_.size());
    for (const auto& [owner, state] : threads_) {
        states.push_back(state);
    }
    return states;
}

}  // namespace orbel
