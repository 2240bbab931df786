// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "GdsAccess.h"
#include "vplc/Station.h"

namespace controllertest {

// A bus of one digital module with both of its frame buffers acquired, as a driver holds them;
// released when the test ends.
class BusFrames : public ::testing::Test {
protected:
    ~BusFrames() override {
        ArpPlcIo_ReleaseGdsBuffer(out_);
        ArpPlcIo_ReleaseGdsBuffer(in_);
    }

    vplc::Station station_ = vplc::Station::of({vplc::Module::DI8_DO8});
    TGdsBuffer* in_ = acquire("1:IN");
    TGdsBuffer* out_ = acquire("1:OUT");
};

}  // namespace controllertest
