// SPDX-License-Identifier: MIT
#include "ControllerLock.h"

#include <thread>

namespace vplc {

namespace {

// The calling thread's flag, claimed on its first read and given back when the thread ends.
class ThreadFlag {
public:
    ~ThreadFlag() {
        if (lock_ != nullptr) {
            lock_->returnFlag(flag_);
        }
    }

    std::size_t of(ControllerLock& lock) {
        if (lock_ == nullptr) {
            flag_ = lock.claimFlag();
            lock_ = &lock;
        }
        return flag_;
    }

private:
    ControllerLock* lock_ = nullptr;
    std::size_t flag_ = ControllerLock::kShared;
};

// Initial-exec: the library is loaded with the program, and every platform call looks here.
thread_local ThreadFlag threadFlag __attribute__((tls_model("initial-exec")));

}  // namespace

std::size_t ControllerLock::claimFlag() {
    for (std::size_t flag = 0; flag < kFlags; ++flag) {
        bool free = false;
        // Relaxed: claiming a flag must not order this thread after the one that gave it back.
        if (flags_[flag].taken.compare_exchange_strong(free, true, std::memory_order_relaxed)) {
            // Sequentially consistent, so that a writer that misses this thread's reading flag
            // cannot miss the flag itself either.
            std::size_t inUse = flagsInUse_.load(std::memory_order_seq_cst);
            while (inUse < flag + 1 &&
                   !flagsInUse_.compare_exchange_weak(inUse, flag + 1, std::memory_order_seq_cst)) {
            }
            return flag;
        }
    }
    return kShared;
}

void ControllerLock::returnFlag(std::size_t flag) {
    if (flag != kShared) {
        flags_[flag].taken.store(false, std::memory_order_relaxed);
    }
}

void ControllerLock::enter(std::size_t flag) {
    // Sequentially consistent, with the writer's: either this reader sees the writer, or the
    // writer sees this reader.
    if (flag == kShared) {
        sharedReaders_.fetch_add(1, std::memory_order_seq_cst);
    } else {
        flags_[flag].reading.store(true, std::memory_order_seq_cst);
    }
}

void ControllerLock::leave(std::size_t flag) {
    if (flag == kShared) {
        sharedReaders_.fetch_sub(1, std::memory_order_release);
    } else {
        flags_[flag].reading.store(false, std::memory_order_release);
    }
}

void ControllerLock::lock_shared() {
    const std::size_t flag = threadFlag.of(*this);
    for (;;) {
        enter(flag);
        if (!writing_.load(std::memory_order_seq_cst)) {
            return;
        }
        leave(flag);
        writing_.wait(true, std::memory_order_acquire);
    }
}

void ControllerLock::unlock_shared() {
    leave(threadFlag.of(*this));
}

void ControllerLock::lock() {
    writerMutex_.lock();
    writing_.store(true, std::memory_order_seq_cst);
    const std::size_t inUse = flagsInUse_.load(std::memory_order_seq_cst);
    for (std::size_t flag = 0; flag < inUse; ++flag) {
        while (flags_[flag].reading.load(std::memory_order_seq_cst)) {
            std::this_thread::yield();
        }
    }
    while (sharedReaders_.load(std::memory_order_seq_cst) != 0) {
        std::this_thread::yield();
    }
}

void ControllerLock::unlock() {
    writing_.store(false, std::memory_order_release);
    writing_.notify_all();
    writerMutex_.unlock();
}

}  // namespace vplc
