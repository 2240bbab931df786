// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace axlsimtest {

// One run of the axlsim program, as a user runs it.
struct ProgramRun {
    int status = -1;
    std::string out;
    std::string err;
    long peakKilobytes = 0;  // the most memory the program held (its peak resident set)
};

// Where the program's standard input and output come from and go to; empty: no input, and the
// output is captured.
struct Redirect {
    std::string in;
    std::string out;
};

ProgramRun runProgram(const std::vector<std::string>& arguments, const Redirect& redirect = {});

// The launcher (an emulator in a cross build) and the program, then the arguments.
std::vector<std::string> commandLine(const std::vector<std::string>& arguments);

// A fresh path in the test's temporary directory.
std::string temporaryPath(const std::string& name);

// Writes a configuration to a fresh file in the test's temporary directory; returns its path.
std::string writeConfig(const std::string& name, const std::string& text);

}  // namespace axlsimtest
