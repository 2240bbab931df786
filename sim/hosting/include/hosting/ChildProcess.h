// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace hosting {

struct ChildResult {
    int exitCode = -1;   // -1 when the child did not exit normally
    std::string output;  // what the child wrote to standard output
};

// Runs `body` in a forked child process and returns its exit code with everything it wrote to
// standard output. For work that may happen only once per process, such as the runtime
// attachment. Fork only while the calling process has started no thread.
ChildResult runInChild(const std::function<int()>& body);

// The number of threads of the calling process.
int threadsOfThisProcess();

}  // namespace hosting
