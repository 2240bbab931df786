// SPDX-License-Identifier: MIT
#include "MatrixPrinter.h"

#include <iostream>
#include <sstream>
#include <utility>

namespace faultmatrix {

namespace {

// Registered before the tests run, so that the runner tears it down after the last one.
[[maybe_unused]] const MatrixPrinter& registered = MatrixPrinter::instance();

}  // namespace

MatrixPrinter& MatrixPrinter::instance() {
    // Owned by the test runner once registered.
    static MatrixPrinter* const printer = [] {
        auto* made = new MatrixPrinter;
        testing::AddGlobalTestEnvironment(made);
        return made;
    }();
    return *printer;
}

void MatrixPrinter::add(MatrixLine line) {
    lines_.push_back(std::move(line));
}

void MatrixPrinter::TearDown() {
    if (lines_.empty()) {
        return;
    }
    std::ostringstream out;
    out << "\nFault matrix: " << lines_.size() << " rows\n\n"
        << "| # | platform call | called from | log lines (level: text) | neutral result | "
           "Begin/End (read, write) | released at teardown | afterwards | ok |\n"
        << "|---|---|---|---|---|---|---|---|---|\n";
    int number = 0;
    for (const MatrixLine& line : lines_) {
        out << "| " << ++number << " | " << line.call << " | " << line.site << " | " << line.log
            << " | " << line.neutral << " | " << line.balance << " | " << line.teardown << " | "
            << line.next << " | " << (line.passed ? "yes" : "NO") << " |\n";
    }
    out << "\nThe log lines, the Begin/End counts and ok are what the rows observed; the neutral "
           "result, teardown and afterwards columns are the rows' own words for what their steps "
           "check.\n";
    std::cout << out.str() << std::endl;
}

std::string describeLog(const std::vector<hosting::LoggedLine>& lines) {
    if (lines.empty()) {
        return "(none)";
    }
    std::string text;
    for (const hosting::LoggedLine& line : lines) {
        text += (text.empty() ? "" : " / ") + std::to_string(line.level) + ": " + line.text;
    }
    return text;
}

}  // namespace faultmatrix
