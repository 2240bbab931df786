// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "FaultRow.h"

namespace faultmatrix {

// A row of the matrix as a test case: the failure is logged, the result neutral, Begin and End
// balanced, what was acquired released at teardown, and the driver goes on. Each row group's file
// instantiates it over the group's rows, the group as prefix:
//     INSTANTIATE_TEST_SUITE_P(Scan, FaultMatrix, testing::ValuesIn(scanRows()), rowName);
// which names a case "Scan/FaultMatrix.Row/<row>".
class FaultMatrix : public testing::TestWithParam<FaultRow> {};

// The test case's name: the row's name, its call and place.
std::string rowName(const testing::TestParamInfo<FaultRow>& info);

}  // namespace faultmatrix
