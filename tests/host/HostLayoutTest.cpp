#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "EventClient.h"
#include "HostRecords.h"
#include "PosixThread.h"
#include "SI_base.h"
#include "ServiceType.h"
#include "TestDriver.h"

namespace {

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

// The offset of each given field in a record, in declaration order of the arguments.
template <class Record, class... Fields>
std::vector<std::ptrdiff_t> offsetsOf(Fields Record::*... fields) {
    const Record record{};
    const auto* start = reinterpret_cast<const char*>(&record);
    return {(reinterpret_cast<const char*>(&(record.*fields)) - start)...};
}

bool startAtZeroAndIncrease(const std::vector<std::ptrdiff_t>& offsets) {
    if (offsets.empty() || offsets.front() != 0)
        return false;
    for (std::size_t i = 1; i < offsets.size(); ++i) {
        if (offsets[i] <= offsets[i - 1])
            return false;
    }
    return true;
}

// The virtual-table slot a pointer to a virtual member function names (Itanium C++ ABI; the ARM
// variant keeps the virtual flag in the adjustment word instead of the pointer word).
template <class Function>
std::ptrdiff_t slotOf(Function function) {
    struct Representation {
        std::ptrdiff_t pointer;
        std::ptrdiff_t adjustment;
    } representation;
    static_assert(sizeof(Function) == sizeof(Representation));
    std::memcpy(&representation, &function, sizeof representation);
    const auto slotSize = static_cast<std::ptrdiff_t>(sizeof(void*));
#if defined(__arm__) || defined(__aarch64__)
    if ((representation.adjustment & 1) == 0)
        return -1;
    return representation.pointer / slotSize;
#else
    if ((representation.pointer & 1) == 0)
        return -1;
    return (representation.pointer - 1) / slotSize;
#endif
}

}  // namespace

TEST(HostRecords, TagElementFieldsLieInContractOrder) {
    EXPECT_TRUE(startAtZeroAndIncrease(
        offsetsOf<stTagElem_t>(&stTagElem_t::nHostWord, &stTagElem_t::sHostText1,
                               &stTagElem_t::sHostText2, &stTagElem_t::sHostText3)));
}

TEST(HostRecords, AppBlocInfoFieldsLieInContractOrder) {
    EXPECT_TRUE(startAtZeroAndIncrease(offsetsOf<stAppBlocInfo_t>(
        &stAppBlocInfo_t::sHostText1, &stAppBlocInfo_t::sHostText2, &stAppBlocInfo_t::sHostText3)));
}

TEST(HostRecords, MappingElementFieldsLieInContractOrder) {
    EXPECT_TRUE(startAtZeroAndIncrease(
        offsetsOf<stMappingElem_t>(&stMappingElem_t::nDataSize, &stMappingElem_t::sHostText1,
                                   &stMappingElem_t::sHostText2, &stMappingElem_t::vecTags)));
}

TEST(HostRecords, ServiceParamsFieldsLieInContractOrder) {
    EXPECT_TRUE(startAtZeroAndIncrease(offsetsOf<stServiceParams_t>(
        &stServiceParams_t::byHost1, &stServiceParams_t::byHost2, &stServiceParams_t::nEventId,
        &stServiceParams_t::sName, &stServiceParams_t::sServiceType,
        &stServiceParams_t::mapParams)));
}

TEST(HostRecords, DriverParamsFieldsLieInContractOrder) {
    EXPECT_TRUE(startAtZeroAndIncrease(
        offsetsOf<stSP_Params_t>(&stSP_Params_t::sName, &stSP_Params_t::sServiceName,
                                 &stSP_Params_t::sDeviceType, &stSP_Params_t::mapParams)));
}

TEST(HostRecords, EventParamsFieldsLieInContractOrder) {
    EXPECT_TRUE(startAtZeroAndIncrease(offsetsOf<stEventParams_t>(
        &stEventParams_t::pData, &stEventParams_t::nId, &stEventParams_t::nSize)));
}

TEST(HostRecords, ServiceTypesKeepTheirFixedValues) {
    EXPECT_EQ(AnalogIn, 0);
    EXPECT_EQ(AnalogOut, 1);
    EXPECT_EQ(DigitalIn, 2);
    EXPECT_EQ(DigitalOut, 3);
    EXPECT_EQ(RestartDevice, 4);
    EXPECT_EQ(Unsupported, 5);
}

TEST(HostBaseLayout, TheBaseDataMembersFollowTheVirtualTablePointerInContractOrder) {
    const hosttest::TestDriver driver(hosttest::driverParams("IO1"));
    const std::vector<std::ptrdiff_t> offsets = driver.baseMemberOffsets();
    ASSERT_EQ(offsets.size(), 4u);
    EXPECT_EQ(offsets[0], static_cast<std::ptrdiff_t>(sizeof(void*)));
    EXPECT_LT(offsets[0], offsets[1]);
    EXPECT_LT(offsets[1], offsets[2]);
    EXPECT_LT(offsets[2], offsets[3]);
}

TEST(HostBaseLayout, TheDriverBaseStartsTheDriverObject) {
    const hosttest::TestDriver driver(hosttest::driverParams("IO1"));
    EXPECT_EQ(static_cast<const void*>(static_cast<const CSI_base*>(&driver)),
              static_cast<const void*>(&driver));
}

TEST(HostBaseLayout, EventClientSlotsFollowTheDestructorPair) {
    EXPECT_EQ(slotOf(&CEventClient::receiveEvent), 2);
    EXPECT_EQ(
        slotOf(static_cast<void (CEventClient::*)(unsigned, bool)>(&CEventClient::onReceiveEvent)),
        3);
}

TEST(HostBaseLayout, DriverBaseSlotsFollowTheContractOrder) {
    EXPECT_EQ(slotOf(&CSI_base::receiveEvent), 2);
    EXPECT_EQ(slotOf(static_cast<void (CSI_base::*)(unsigned, bool)>(&CSI_base::onReceiveEvent)),
              3);
    EXPECT_EQ(slotOf(static_cast<void (CSI_base::*)(stEventParams_t)>(&CSI_base::onReceiveEvent)),
              4);
    EXPECT_EQ(slotOf(&CSI_base::convertMemToTag), 5);
    EXPECT_EQ(slotOf(&CSI_base::convertTagToMem), 6);
    EXPECT_EQ(slotOf(&CSI_base::initialize), 7);
    EXPECT_EQ(slotOf(&CSI_base::deInitialise), 8);
    EXPECT_EQ(slotOf(&CSI_base::run), 9);
}

TEST(HostBaseLayout, ThreadBaseSlotsFollowTheContractOrder) {
    EXPECT_EQ(slotOf(&CPosixThread::start), 2);
    EXPECT_EQ(slotOf(&CPosixThread::join), 3);
    EXPECT_EQ(slotOf(&CPosixThread::run), 4);
}
