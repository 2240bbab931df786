// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HostRecords.h"
#include "SI_base.h"
#include "VirtualTable.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverLibrary.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"

namespace {

std::vector<std::string> stopMessages(const orbel::Recorder& recorder, const CSI_base* driver) {
    std::vector<std::string> messages;
    for (const orbel::Stop& stop : recorder.stops(driver)) {
        messages.push_back((stop.hasService ? "service: " : "driver: ") + stop.message);
    }
    return messages;
}

}  // namespace

// The library as a host loads it: by file, through its exported factory, and from then on only
// by virtual-table position.
TEST(DriverSlots, TheBuiltDriverTakesHostEventsAndIsDeletedThroughTheContractSlots) {
    const hosting::DriverLibrary library(AXL_DRIVER_PATH);
    orbel::Recorder recorder;
    // Deleted below through its slot, not by the host's owner.
    CSI_base* driver =
        hosting::host::create(hosting::DriverConfig::digital(), library.factory()).release();
    const stEventParams_t withoutData{nullptr, 7, 1};

    layouttest::callSlot<const stEventParams_t&>(driver, 2, withoutData);
    layouttest::callSlot<stEventParams_t>(driver, 4, withoutData);
    EXPECT_EQ(stopMessages(recorder, driver),
              (std::vector<std::string>{"driver: Null data pointer", "driver: Null data pointer"}));

    layouttest::callSlot<>(driver, 1);
}
