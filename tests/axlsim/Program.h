#pragma once

#include <string>
#include <vector>

namespace axlsimtest {

// One run of the axlsim program, as a user runs it.
struct ProgramRun {
    int status = -1;
    std::string out;
    std::string err;
};

ProgramRun runProgram(const std::vector<std::string>& arguments);

// Writes a configuration to a fresh file in the test's temporary directory; returns its path.
std::string writeConfig(const std::string& name, const std::string& text);

}  // namespace axlsimtest
