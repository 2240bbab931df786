// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

// Every runtime test starts and ends with the runtime's defaults, no faults, no call counts and
// no registered PLC operation handler.
class RuntimeTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};
