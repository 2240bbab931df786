// SPDX-License-Identifier: MIT
#include "RunningProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "Program.h"

extern char** environ;

namespace axlsimtest {

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

RunningProgram::RunningProgram(const std::vector<std::string>& arguments)
    : errPath_(temporaryPath("stderr")) {
    std::vector<std::string> words = commandLine(arguments);
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);

    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath_.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int spawned = posix_spawnp(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    pipe_ = ends[0];
    if (spawned != 0) {
        close(pipe_);
        throw std::runtime_error("cannot start " + words[0]);
    }
}

RunningProgram::~RunningProgram() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    if (pipe_ >= 0) {
        close(pipe_);
    }
    unlink(errPath_.c_str());
}

bool RunningProgram::readSome(std::chrono::milliseconds limit) {
    pollfd ready{pipe_, POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(limit.count())) <= 0) {
        return true;
    }
    char buffer[4096];
    const ssize_t count = read(pipe_, buffer, sizeof buffer);
    if (count <= 0) {
        ended_ = true;
        return false;
    }
    out_.append(buffer, static_cast<std::size_t>(count));
    return true;
}

bool RunningProgram::readUntil(const std::string& text, std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (out_.find(text) == std::string::npos) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (ended_ || left.count() <= 0) {
            return false;
        }
        readSome(left);
    }
    return true;
}

void RunningProgram::signal(int number) const {
    kill(pid_, number);
}

void RunningProgram::closeOutput() {
    close(pipe_);
    pipe_ = -1;
    ended_ = true;
}

int RunningProgram::finish(std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (!ended_) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            return -1;
        }
        readSome(left);
    }
    // A program whose output is closed may still run: it is given what is left of `limit`.
    if (!exitsWithin(
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()))) {
        return -1;
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool RunningProgram::exitsWithin(std::chrono::milliseconds limit) const {
#ifdef SYS_pidfd_open
    const int process = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    if (process >= 0) {
        pollfd ended{process, POLLIN, 0};
        const int ready = poll(&ended, 1, static_cast<int>(std::max<int64_t>(limit.count(), 0)));
        close(process);
        return ready == 1;
    }
#endif
    // Without a descriptor for the process (an old kernel or emulator), wait as long as it takes.
    (void)limit;
    return true;
}

std::string RunningProgram::err() const {
    std::ifstream in(errPath_);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace axlsimtest
