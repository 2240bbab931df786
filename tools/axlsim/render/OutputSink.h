// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <mutex>
#include <streambuf>
#include <string>

namespace axlsim {

// Where a run's output goes: a file descriptor written in blocks, at least every 100 ms of wall
// time and at the end, so that a reader sees lines as the run goes. The first failed write is
// kept with its errno, taken when it failed; what comes after it is dropped, so that a run can
// stop at once and say why. Safe to write from the threads of a wall-clock run and to flush from
// the one that plays it.
class OutputSink final : public std::streambuf {
public:
    // Writes to `fd`; owns it (closes it at the end) only if `owned`.
    OutputSink(int fd, bool owned);
    ~OutputSink() override;
    OutputSink(const OutputSink&) = delete;
    OutputSink& operator=(const OutputSink&) = delete;

    // Writes what is held if the last write is 100 ms or more ago; with nothing held, looks
    // whether a pipe's reader has gone.
    void flushIfDue();

    // Writes everything held; false once a write has failed.
    bool flush();

    bool failed() const;
    // The errno of the first failed write, 0 for none.
    int error() const;

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

private:
    void append(const char* text, std::size_t count);
    void writeHeld();  // under the lock

    mutable std::mutex mutex_;
    int fd_;
    bool owned_;
    std::string held_;
    int error_ = 0;
    std::chrono::steady_clock::time_point lastWrite_;
};

// Opens `path` for writing, emptied, into `fd`; the errno of open() when it cannot.
int openForWriting(const std::string& path, int& fd);

}  // namespace axlsim
