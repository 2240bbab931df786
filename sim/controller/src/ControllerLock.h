// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <mutex>

namespace vplc {

// The controller's reader/writer lock. Every platform call on the driver's scan and event paths
// takes it shared, so its shared side must be cheap and must order no two readers, not even for
// ThreadSanitizer: each thread reads under a flag of its own, which no other reader touches, and
// claims and gives back that flag with relaxed operations (std::shared_mutex writes one word that
// all readers share, and costs several times as much). The exclusive side is for the rare changes
// (a bus installed, a handle handed out, the plant's inputs): it keeps new readers out and waits,
// yielding, for the readers inside, who hold the lock for one call and never wait while they hold
// it.
//
// There is one, the controller's: a thread's flag is claimed for the life of the thread.
class ControllerLock {
public:
    ControllerLock() = default;
    ControllerLock(const ControllerLock&) = delete;
    ControllerLock& operator=(const ControllerLock&) = delete;

    void lock_shared();
    void unlock_shared();
    void lock();
    void unlock();

    // A thread's flag: its index, or kShared when every flag is taken; then the thread counts
    // itself in one shared counter instead, which orders it with the other threads that do.
    static constexpr std::size_t kFlags = 1024;
    static constexpr std::size_t kShared = kFlags;
    std::size_t claimFlag();
    void returnFlag(std::size_t flag);

private:
    struct alignas(64) ReaderFlag {
        std::atomic<bool> reading = false;
        std::atomic<bool> taken = false;
    };

    void enter(std::size_t flag);
    void leave(std::size_t flag);

    std::atomic<bool> writing_ = false;
    std::mutex writerMutex_;
    std::array<ReaderFlag, kFlags> flags_;
    std::atomic<std::size_t> flagsInUse_ = 0;  // one past the highest flag ever claimed
    std::atomic<int> sharedReaders_ = 0;
};

}  // namespace vplc
