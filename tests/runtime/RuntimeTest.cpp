// SPDX-License-Identifier: MIT
#include "RuntimeTest.h"

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "OperationRecorder.h"
#include "vplc/PlatformCalls.h"
#include "vplc/Runtime.h"

namespace {

void startAfresh() {
    vplc::Runtime::reset();
    ArpPlcDomain_SetHandler(nullptr);
    OperationRecorder::clear();
    vplc::clearFaults();
    vplc::resetCallCounts();
}

}  // namespace

void RuntimeTest::SetUp() {
    startAfresh();
}

void RuntimeTest::TearDown() {
    startAfresh();
}
