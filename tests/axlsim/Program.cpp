// SPDX-License-Identifier: MIT
#include "Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

extern char** environ;

namespace axlsimtest {

namespace {

std::string slurp(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The files this test program made, removed when it ends, so that runs leave nothing behind.
class TemporaryFiles {
public:
    ~TemporaryFiles() {
        for (const std::string& path : paths_) {
            unlink(path.c_str());
        }
    }

    void add(const std::string& path) { paths_.push_back(path); }

private:
    std::vector<std::string> paths_;
};

TemporaryFiles temporaryFiles;

// Far beyond the longest run of a test, even under a sanitizer or an emulator: a program that has
// not ended by then hangs (a server that a refusal failed to stop, say), and is stopped, so that it
// fails its test instead of holding up the suite.
constexpr std::chrono::seconds kLongestRun{300};

// Waits for the program to end, for at most kLongestRun; kills it after that. True when it ended
// by itself.
bool waitWithin(pid_t pid, int& status, rusage& usage) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestRun;
    for (;;) {
        const pid_t ended = wait4(pid, &status, WNOHANG, &usage);
        if (ended == pid || (ended < 0 && errno != EINTR)) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            kill(pid, SIGKILL);
            wait4(pid, &status, 0, &usage);
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

}  // namespace

std::string temporaryPath(const std::string& name) {
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string file = std::string("axlsim_") + test->test_suite_name() + "_" + test->name() + "_" +
                       std::to_string(getpid()) + "_" + name;
    std::replace(file.begin(), file.end(), '/', '_');
    const std::string path = ::testing::TempDir() + file;
    temporaryFiles.add(path);
    return path;
}

std::vector<std::string> commandLine(const std::vector<std::string>& arguments) {
    std::vector<std::string> words;
    std::istringstream launcher(AXLSIM_LAUNCHER);
    for (std::string word; launcher >> word;) {
        words.push_back(word);
    }
    words.push_back(AXLSIM_PROGRAM);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

ProgramRun runProgram(const std::vector<std::string>& arguments, const Redirect& redirect) {
    const std::string outPath = redirect.out.empty() ? temporaryPath("stdout") : redirect.out;
    const std::string errPath = temporaryPath("stderr");
    std::vector<std::string> words = commandLine(arguments);
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO,
                                     redirect.in.empty() ? "/dev/null" : redirect.in.c_str(),
                                     O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errPath.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        throw std::runtime_error("cannot start " + words[0]);
    }

    int status = 0;
    rusage usage{};
    const bool ended = waitWithin(pid, status, usage);
    ProgramRun run;
    run.peakKilobytes = usage.ru_maxrss;
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.err = slurp(errPath);
    if (!ended) {
        run.err += "\n(the test stopped axlsim: it had not ended within " +
                   std::to_string(kLongestRun.count()) + " s)";
    }
    if (redirect.out.empty()) {
        run.out = slurp(outPath);
        unlink(outPath.c_str());
    }
    unlink(errPath.c_str());
    return run;
}

std::string writeConfig(const std::string& name, const std::string& text) {
    const std::string path = temporaryPath(name);
    std::ofstream(path) << text;
    return path;
}

}  // namespace axlsimtest
