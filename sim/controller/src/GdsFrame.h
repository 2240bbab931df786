#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <shared_mutex>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "vplc/Frame.h"

namespace vplc {

enum class Access { Read, Write };

// The data of one GDS frame, with its reader/writer lock. The data is allocated to its exact size,
// so that an access past its end is caught by the address sanitizer. The lock is taken without the
// controller's mutex; the record of which thread holds it (and how), and whether the frame's bus
// is gone, are guarded by the controller's mutex.
class GdsFrame {
public:
    GdsFrame(Frame which, std::size_t size);

    Frame which() const { return which_; }
    std::string_view bufferId() const;
    std::size_t size() const { return size_; }
    char* data() { return data_.get(); }

    void lock(Access access);
    void unlock(Access access);

    std::optional<Access> heldBy(std::thread::id thread) const;
    void addHolder(std::thread::id thread, Access access);
    void removeHolder(std::thread::id thread);
    int holders() const { return static_cast<int>(holders_.size()); }

    // Set when the frame's bus has gone; a thread that was waiting for the lock then fails.
    bool retired() const { return retired_; }
    void retire() { retired_ = true; }

private:
    Frame which_;
    std::size_t size_;
    std::unique_ptr<char[]> data_;
    std::shared_mutex dataLock_;
    std::vector<std::pair<std::thread::id, Access>> holders_;
    bool retired_ = false;
};

}  // namespace vplc
