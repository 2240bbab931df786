// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "HostRecords.h"
#include "PinnedLayout.h"
#include "ServiceType.h"

namespace {

using layouttest::PinnedLayout;
using layouttest::RecordLayout;

// Field types, as the driver and the host must both see them.
static_assert(std::is_same_v<decltype(stTagElem_t::nHostWord), uint32_t>);
static_assert(std::is_same_v<decltype(stMappingElem_t::nDataSize), uint16_t>);
static_assert(std::is_same_v<decltype(stMappingElem_t::vecTags), std::vector<stTagElem_t>>);
static_assert(std::is_same_v<decltype(stServiceParams_t::byHost1), uint8_t>);
static_assert(std::is_same_v<decltype(stServiceParams_t::byHost2), uint8_t>);
static_assert(std::is_same_v<decltype(stServiceParams_t::nEventId), uint32_t>);
static_assert(
    std::is_same_v<decltype(stServiceParams_t::mapParams), std::map<std::string, std::string>>);
static_assert(
    std::is_same_v<decltype(stSP_Params_t::mapParams), std::map<std::string, std::string>>);
static_assert(std::is_same_v<decltype(stEventParams_t::pData), uint8_t*>);
static_assert(std::is_same_v<decltype(stEventParams_t::nId), uint32_t>);
static_assert(std::is_same_v<decltype(stEventParams_t::nSize), uint32_t>);
static_assert(std::is_same_v<std::underlying_type_t<ServiceType>, int>);

// The offset of each given field in a record, in the order of the arguments.
template <class Record, class... Fields>
std::vector<std::ptrdiff_t> offsetsOf(Fields Record::*... fields) {
    const Record record{};
    const auto* start = reinterpret_cast<const char*>(&record);
    return {(reinterpret_cast<const char*>(&(record.*fields)) - start)...};
}

bool startAtZeroAndIncrease(const std::vector<std::ptrdiff_t>& offsets) {
    if (offsets.empty() || offsets.front() != 0) {
        return false;
    }
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        if (offsets[i] <= offsets[i - 1]) {
            return false;
        }
    }
    return true;
}

// The field order holds on every target; size and offsets are compared with the pinned layout
// of the target this test is built for.
void expectLayout(std::size_t size, const std::vector<std::ptrdiff_t>& offsets,
                  RecordLayout PinnedLayout::*record) {
    EXPECT_TRUE(startAtZeroAndIncrease(offsets));
    const PinnedLayout* pinned = layouttest::pinnedLayout();
    ASSERT_NE(pinned, nullptr) << "no layout of the host contract is pinned for this target ABI";
    EXPECT_EQ(size, (pinned->*record).size) << pinned->abi;
    EXPECT_EQ(offsets, (pinned->*record).offsets) << pinned->abi;
}

}  // namespace

TEST(HostRecordLayout, TagElementFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(sizeof(stTagElem_t),
                 offsetsOf<stTagElem_t>(&stTagElem_t::nHostWord, &stTagElem_t::sHostText1,
                                        &stTagElem_t::sHostText2, &stTagElem_t::sHostText3),
                 &PinnedLayout::tagElem);
}

TEST(HostRecordLayout, AppBlocInfoFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(
        sizeof(stAppBlocInfo_t),
        offsetsOf<stAppBlocInfo_t>(&stAppBlocInfo_t::sHostText1, &stAppBlocInfo_t::sHostText2,
                                   &stAppBlocInfo_t::sHostText3),
        &PinnedLayout::appBlocInfo);
}

TEST(HostRecordLayout, MappingElementFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(
        sizeof(stMappingElem_t),
        offsetsOf<stMappingElem_t>(&stMappingElem_t::nDataSize, &stMappingElem_t::sHostText1,
                                   &stMappingElem_t::sHostText2, &stMappingElem_t::vecTags),
        &PinnedLayout::mappingElem);
}

TEST(HostRecordLayout, ServiceParamsFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(sizeof(stServiceParams_t),
                 offsetsOf<stServiceParams_t>(
                     &stServiceParams_t::byHost1, &stServiceParams_t::byHost2,
                     &stServiceParams_t::nEventId, &stServiceParams_t::sName,
                     &stServiceParams_t::sServiceType, &stServiceParams_t::mapParams),
                 &PinnedLayout::serviceParams);
}

TEST(HostRecordLayout, DriverParamsFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(sizeof(stSP_Params_t),
                 offsetsOf<stSP_Params_t>(&stSP_Params_t::sName, &stSP_Params_t::sServiceName,
                                          &stSP_Params_t::sDeviceType, &stSP_Params_t::mapParams),
                 &PinnedLayout::spParams);
}

TEST(HostRecordLayout, EventParamsFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(sizeof(stEventParams_t),
                 offsetsOf<stEventParams_t>(&stEventParams_t::pData, &stEventParams_t::nId,
                                            &stEventParams_t::nSize),
                 &PinnedLayout::eventParams);
}

TEST(HostRecordLayout, ServiceTypesAreFourByteIntsWithTheirFixedValues) {
    EXPECT_EQ(sizeof(ServiceType), 4u);
    EXPECT_EQ(AnalogIn, 0);
    EXPECT_EQ(AnalogOut, 1);
    EXPECT_EQ(DigitalIn, 2);
    EXPECT_EQ(DigitalOut, 3);
    EXPECT_EQ(RestartDevice, 4);
    EXPECT_EQ(Unsupported, 5);
}
