#pragma once

#include <functional>
#include <string>

namespace loadertest {

struct ChildResult {
    int exitCode = -1;   // -1 when the child did not exit normally
    std::string output;  // what the child wrote to standard output
};

// Runs `body` in a forked child process and returns its result as the exit code, together with
// everything the child wrote to standard output.
ChildResult runInChild(const std::function<int()>& body);

}  // namespace loadertest
