// SPDX-License-Identifier: MIT
#include "hosting/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>

namespace hosting {

ChildResult runInChild(const std::function<int()>& body) {
    std::fflush(stdout);
    std::cout.flush();
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) {
        return {};
    }
    pid_t pid = fork();
    if (pid == 0) {
        close(pipeEnds[0]);
        dup2(pipeEnds[1], STDOUT_FILENO);
        int code = body();
        std::cout.flush();
        std::fflush(stdout);
        _exit(code);
    }
    close(pipeEnds[1]);
    ChildResult result;
    std::array<char, 512> chunk;
    ssize_t count = 0;
    while ((count = read(pipeEnds[0], chunk.data(), chunk.size())) > 0) {
        result.output.append(chunk.data(), static_cast<std::size_t>(count));
    }
    close(pipeEnds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) {
        result.exitCode = WEXITSTATUS(status);
    }
    return result;
}

int threadsOfThisProcess() {
    int threads = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/task")) {
        ++threads;
    }
    return threads;
}

}  // namespace hosting
