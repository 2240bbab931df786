// SPDX-License-Identifier: MIT
#include "axlsim/render/OutputSink.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace axlsim {

namespace {

using namespace std::chrono_literals;

// Large enough that a timeline is written in few calls, small enough to stay in the cache.
constexpr std::size_t kBlock = 64 * 1024;
constexpr auto kPatience = 100ms;

}  // namespace

OutputSink::OutputSink(int fd, bool owned)
    : fd_(fd), owned_(owned), lastWrite_(std::chrono::steady_clock::now()) {
    held_.reserve(kBlock);
}

OutputSink::~OutputSink() {
    flush();
    if (owned_) {
        ::close(fd_);
    }
}

int openForWriting(const std::string& path, int& fd) {
    fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return fd < 0 ? errno : 0;
}

void OutputSink::flushIfDue() {
    std::lock_guard lock(mutex_);
    if (error_ != 0 || std::chrono::steady_clock::now() - lastWrite_ < kPatience) {
        return;
    }
    if (!held_.empty()) {
        writeHeld();
        return;
    }
    // A run that has nothing to say for a while still learns that its reader is gone: a pipe
    // whose reading end is closed polls as an error.
    lastWrite_ = std::chrono::steady_clock::now();
    pollfd state{fd_, POLLOUT, 0};
    if (::poll(&state, 1, 0) == 1 && (state.revents & POLLERR) != 0) {
        error_ = EPIPE;
    }
}

bool OutputSink::flush() {
    std::lock_guard lock(mutex_);
    writeHeld();
    return error_ == 0;
}

bool OutputSink::failed() const {
    std::lock_guard lock(mutex_);
    return error_ != 0;
}

int OutputSink::error() const {
    std::lock_guard lock(mutex_);
    return error_;
}

OutputSink::int_type OutputSink::overflow(int_type c) {
    if (!traits_type::eq_int_type(c, traits_type::eof())) {
        const char ch = traits_type::to_char_type(c);
        append(&ch, 1);
    }
    return traits_type::not_eof(c);
}

std::streamsize OutputSink::xsputn(const char* text, std::streamsize count) {
    append(text, static_cast<std::size_t>(count));
    return count;
}

int OutputSink::sync() {
    return flush() ? 0 : -1;
}

void OutputSink::append(const char* text, std::size_t count) {
    std::lock_guard lock(mutex_);
    if (error_ != 0) {
        return;
    }
    held_.append(text, count);
    if (held_.size() >= kBlock || std::chrono::steady_clock::now() - lastWrite_ >= kPatience) {
        writeHeld();
    }
}

void OutputSink::writeHeld() {
    lastWrite_ = std::chrono::steady_clock::now();
    std::size_t done = 0;
    while (error_ == 0 && done < held_.size()) {
        const ssize_t written = ::write(fd_, held_.data() + done, held_.size() - done);
        if (written < 0) {
            if (errno != EINTR) {
                error_ = errno;
            }
        } else if (written == 0) {
            error_ = EIO;
        } else {
            done += static_cast<std::size_t>(written);
        }
    }
    held_.clear();
}

}  // namespace axlsim
