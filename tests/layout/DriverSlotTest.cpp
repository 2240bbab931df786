// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "DriverFactory.h"
#include "HostRecords.h"
#include "SI_base.h"
#include "VirtualTable.h"
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
    void* library = dlopen(AXL_DRIVER_PATH, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    auto createSiObject = reinterpret_cast<DriverFactory>(dlsym(library, kDriverFactorySymbol));
    ASSERT_NE(createSiObject, nullptr);
    orbel::Recorder recorder;
    stSP_Params_t params;
    params.sServiceName = "IO1";
    params.sDeviceType = "AXL_F_DI8_1_DO8_1";
    params.mapParams["Consecutive Number"] = "1";
    std::map<unsigned, stMappingElem_t> mappings;
    std::map<unsigned, stServiceParams_t> services;
    CSI_base* driver = createSiObject(params, &mappings, &services);
    const stEventParams_t withoutData{nullptr, 7, 1};

    layouttest::callSlot<const stEventParams_t&>(driver, 2, withoutData);
    layouttest::callSlot<stEventParams_t>(driver, 4, withoutData);
    EXPECT_EQ(stopMessages(recorder, driver),
              (std::vector<std::string>{"driver: Null data pointer", "driver: Null data pointer"}));

    layouttest::callSlot<>(driver, 1);
}
