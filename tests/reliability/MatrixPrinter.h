// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "hosting/LoggedLine.h"

namespace faultmatrix {

// One row of the matrix as it is printed, with what was observed.
struct MatrixLine {
    std::string call;
    std::string site;
    std::string log;
    std::string neutral;
    std::string balance;
    std::string teardown;
    std::string next;
    bool passed = false;
};

// Prints the rows this program ran, as one table, once every test has run, so that a reader
// sees every row of the matrix (a single row when a test runner runs the rows one by one).
class MatrixPrinter final : public testing::Environment {
public:
    // The printer this program registers.
    static MatrixPrinter& instance();

    void add(MatrixLine line);
    void TearDown() override;

private:
    std::vector<MatrixLine> lines_;
};

// Log lines as one cell: "level: text" joined by " / ", or "(none)".
std::string describeLog(const std::vector<hosting::LoggedLine>& lines);

}  // namespace faultmatrix
