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

// The given fields, in the order of the arguments, lie in that order on every target; the
// record's size and their offsets are compared with the pinned layout of the target this test is
// built for.
template <class Record, class... Fields>
void expectLayout(RecordLayout PinnedLayout::*record, Fields Record::*... fields) {
    const std::vector<std::ptrdiff_t> offsets = offsetsOf<Record>(fields...);
    EXPECT_TRUE(startAtZeroAndIncrease(offsets));
    const PinnedLayout* pinned = layouttest::pinnedLayout();
    ASSERT_NE(pinned, nullptr) << "no layout of the host contract is pinned for this target ABI";
    EXPECT_EQ(sizeof(Record), (pinned->*record).size) << pinned->abi;
    EXPECT_EQ(offsets, (pinned->*record).offsets) << pinned->abi;
}

}  // namespace

TEST(HostRecordLayout, TagElementFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(&PinnedLayout::tagElem, &stTagElem_t::nHostWord, &stTagElem_t::sHostText1,
                 &stTagElem_t::sHostText2, &stTagElem_t::sHostText3);
}

TEST(HostRecordLayout, AppBlocInfoFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(&PinnedLayout::appBlocInfo, &stAppBlocInfo_t::sHostText1,
                 &stAppBlocInfo_t::sHostText2, &stAppBlocInfo_t::sHostText3);
}

TEST(HostRecordLayout, MappingElementFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(&PinnedLayout::mappingElem, &stMappingElem_t::nDataSize,
                 &stMappingElem_t::sHostText1, &stMappingElem_t::sHostText2,
                 &stMappingElem_t::vecTags);
}

TEST(HostRecordLayout, ServiceParamsFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(&PinnedLayout::serviceParams, &stServiceParams_t::byHost1,
                 &stServiceParams_t::byHost2, &stServiceParams_t::nEventId,
                 &stServiceParams_t::sName, &stServiceParams_t::sServiceType,
                 &stServiceParams_t::mapParams);
}

TEST(HostRecordLayout, DriverParamsFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(&PinnedLayout::spParams, &stSP_Params_t::sName, &stSP_Params_t::sServiceName,
                 &stSP_Params_t::sDeviceType, &stSP_Params_t::mapParams);
}

TEST(HostRecordLayout, EventParamsFieldsLieInContractOrderWithThePinnedSize) {
    expectLayout(&PinnedLayout::eventParams, &stEventParams_t::pData, &stEventParams_t::nId,
                 &stEventParams_t::nSize);
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
