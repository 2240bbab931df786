// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FaultRow.h"
#include "Scenario.h"
#include "Steps.h"

namespace faultmatrix {

// A row of the matrix as a test case: the failure is logged, the result neutral, Begin and End
// balanced, what was acquired released at teardown, and the driver goes on. Each row group
// derives a suite of its own and instantiates it over its rows with the prefix "FaultMatrix".
class FaultRowTest : public testing::TestWithParam<FaultRow> {
public:
    // The test case's name: the row's call and place.
    static std::string nameOf(const testing::TestParamInfo<FaultRow>& info);

protected:
    void runRow();
};

}  // namespace faultmatrix

// The test cases of one row group: a suite named `group`, one case "FaultMatrix/<group>.Row/<row>"
// per row. The body that follows the macro returns the rows:
//     FAULT_MATRIX_ROWS(Scan) { return {{.name = ...}, ...}; }
#define FAULT_MATRIX_ROWS(group)                                                   \
    static std::vector<faultmatrix::FaultRow> group##Rows();                       \
    class group : public faultmatrix::FaultRowTest {};                             \
    TEST_P(group, Row) {                                                           \
        runRow();                                                                  \
    }                                                                              \
    INSTANTIATE_TEST_SUITE_P(FaultMatrix, group, testing::ValuesIn(group##Rows()), \
                             faultmatrix::FaultRowTest::nameOf);                   \
    static std::vector<faultmatrix::FaultRow> group##Rows()
