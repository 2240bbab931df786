#pragma once

#include <string>

#include <gtest/gtest.h>

#include "FaultRow.h"

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
