// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace axlsimtest {

// The axlsim program running alongside the test, its standard output read through a pipe as it
// comes, so that a test can see lines arrive before the program ends and signal it meanwhile.
class RunningProgram {
public:
    explicit RunningProgram(const std::vector<std::string>& arguments);
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    // Reads until the output holds `text`; false when the program ends first or the time is up.
    bool readUntil(const std::string& text, std::chrono::milliseconds limit);

    void signal(int number) const;

    // Closes the reading end of the pipe, as a pager that is quit does.
    void closeOutput();

    // Reads the rest and waits for the end, at most `limit`; the exit status, or 128 + the
    // signal that ended it, or -1 when the time was up (the program is then killed).
    int finish(std::chrono::milliseconds limit);

    const std::string& out() const { return out_; }
    std::string err() const;

private:
    // Whether the program ends within `limit`.
    bool exitsWithin(std::chrono::milliseconds limit) const;
    // Reads what is there within `limit`; false at the end of the output.
    bool readSome(std::chrono::milliseconds limit);

    pid_t pid_ = -1;
    int pipe_ = -1;
    std::string errPath_;
    std::string out_;
    bool ended_ = false;
};

}  // namespace axlsimtest
