// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string_view>

#include "vplc/Frame.h"

namespace vplc {

enum class Access { Read, Write };

// The data of one GDS frame, with its reader/writer lock. The data is allocated to its exact size,
// so that an access past its end is caught by the address sanitizer. Which frames a thread holds
// locked, and how, is recorded per thread, so that the record orders no two threads; the frame
// keeps only the number of its holders.
class GdsFrame {
public:
    GdsFrame(Frame which, std::size_t size);

    Frame which() const { return which_; }
    std::string_view bufferId() const;
    std::size_t size() const { return size_; }
    char* data() { return data_.get(); }

    void lock(Access access);
    bool tryLock(Access access);
    void unlock(Access access);

    // How the calling thread holds the frame's lock, if it does.
    std::optional<Access> heldByCaller() const;
    void addCaller(Access access);
    void removeCaller();
    int holders() const { return holders_.load(); }

    // Set when the frame's bus has gone; a thread that was waiting for the lock then fails.
    bool retired() const { return retired_.load(); }
    void retire() { retired_.store(true); }

private:
    Frame which_;
    std::size_t size_;
    std::unique_ptr<char[]> data_;
    std::shared_mutex dataLock_;
    std::atomic<int> holders_ = 0;
    std::atomic<bool> retired_ = false;
};

}  // namespace vplc
