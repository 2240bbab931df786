// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Arp/System/Module/ArpSystemModule.h"
#include "OperationRecorder.h"
#include "RuntimeTest.h"
#include "vplc/Runtime.h"

namespace {

using vplc::Runtime;

class PlcOperationDelivery : public RuntimeTest {};

void startTarnwick() {
    ArpSystemModuleMain("tarnwick", "/opt/run/./Default.acf.settings");
}

TEST_F(PlcOperationDelivery, AStartDeliversOneColdStartOnAThreadOtherThanTheCallers) {
    ArpPlcDomain_SetHandler(OperationRecorder::handle);

    startTarnwick();
    Runtime::waitUntilDelivered();

    std::vector<OperationRecorder::Delivery> deliveries = OperationRecorder::deliveries();
    ASSERT_EQ(deliveries.size(), 1u);
    EXPECT_EQ(deliveries[0].operation, PlcOperation_StartCold);
    EXPECT_NE(deliveries[0].thread, std::this_thread::get_id());
}

TEST_F(PlcOperationDelivery, TheChosenStartOperationsArriveInOrder) {
    ArpPlcDomain_SetHandler(OperationRecorder::handle);
    Runtime::setStartOperations({PlcOperation_Load, PlcOperation_Setup, PlcOperation_StartWarm});

    startTarnwick();
    Runtime::waitUntilDelivered();

    std::vector<PlcOperation> expected{PlcOperation_Load, PlcOperation_Setup,
                                       PlcOperation_StartWarm};
    EXPECT_EQ(OperationRecorder::operations(), expected);
}

TEST_F(PlcOperationDelivery, NoStartOperationsMeansNothingIsDelivered) {
    ArpPlcDomain_SetHandler(OperationRecorder::handle);
    Runtime::setStartOperations({});

    startTarnwick();
    Runtime::waitUntilDelivered();

    EXPECT_TRUE(OperationRecorder::operations().empty());
}

TEST_F(PlcOperationDelivery, LaterOperationsFollowInOrderOnTheSameRuntimeThread) {
    ArpPlcDomain_SetHandler(OperationRecorder::handle);
    startTarnwick();

    Runtime::deliver(PlcOperation_Stop);
    Runtime::deliver(PlcOperation_StartHot);
    Runtime::waitUntilDelivered();

    std::vector<OperationRecorder::Delivery> deliveries = OperationRecorder::deliveries();
    std::vector<PlcOperation> expected{PlcOperation_StartCold, PlcOperation_Stop,
                                       PlcOperation_StartHot};
    EXPECT_EQ(OperationRecorder::operations(), expected);
    for (const OperationRecorder::Delivery& delivery : deliveries) {
        EXPECT_EQ(delivery.thread, deliveries[0].thread);
        EXPECT_NE(delivery.thread, std::this_thread::get_id());
    }
}

TEST_F(PlcOperationDelivery, AnOperationThatFindsNoHandlerIsDroppedNotKeptForLater) {
    Runtime::deliver(PlcOperation_StartCold);
    Runtime::waitUntilDelivered();

    ArpPlcDomain_SetHandler(OperationRecorder::handle);
    Runtime::deliver(PlcOperation_Stop);
    Runtime::waitUntilDelivered();

    std::vector<PlcOperation> expected{PlcOperation_Stop};
    EXPECT_EQ(OperationRecorder::operations(), expected);
}

}  // namespace
