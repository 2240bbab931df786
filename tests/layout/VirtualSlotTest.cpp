// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "EventClientProbe.h"
#include "PinnedLayout.h"
#include "SlotProbe.h"
#include "VirtualTable.h"

namespace {

using layouttest::callSlot;
using layouttest::EventClientProbe;
using layouttest::SlotProbe;
using Calls = std::vector<std::string>;

}  // namespace

TEST(VirtualSlots, TheEventClientTableHoldsTheDestructorsThenReceiveEventThenTheNotification) {
    Calls calls;
    CEventClient* client = new EventClientProbe(calls);
    stEventParams_t event{nullptr, 7, 0};

    callSlot<const stEventParams_t&>(client, 2, event);
    callSlot<unsigned, bool>(client, 3, 9u, true);
    callSlot<>(client, 1);

    EXPECT_EQ(calls, (Calls{"receiveEvent 7", "onReceiveEvent(unsigned, bool) 9 true",
                            "~EventClientProbe"}));
}

TEST(VirtualSlots, TheDriverBaseTableHoldsTheOperationsInContractOrder) {
    Calls calls;
    SlotProbe probe(calls);
    CSI_base* base = &probe;
    uint8_t payload[4] = {};
    stEventParams_t event{payload, 7, 4};
    stAppBlocInfo_t info{"block", "", ""};
    const std::string text = "tag";

    callSlot<const stEventParams_t&>(base, 2, event);
    callSlot<unsigned, bool>(base, 3, 9u, false);
    callSlot<stEventParams_t>(base, 4, event);
    callSlot<stEventParams_t&, const stAppBlocInfo_t&>(base, 5, event, info);
    callSlot<stEventParams_t&, const stAppBlocInfo_t&, bool, const std::string&>(base, 6, event,
                                                                                 info, true, text);
    callSlot<>(base, 7);
    callSlot<>(base, 8);
    callSlot<>(base, 9);

    EXPECT_EQ(
        calls,
        (Calls{"receiveEvent 7 size 4", "onReceiveEvent(unsigned, bool) 9 false",
               "onReceiveEvent(stEventParams_t) 7 size 4", "convertMemToTag 7 size 4 block",
               "convertTagToMem 7 size 4 block true tag", "initialize", "deInitialise", "run"}));
}

TEST(VirtualSlots, TheThreadBaseTableHoldsTheDestructorsThenStartJoinAndTheDriversRun) {
    Calls calls;
    SlotProbe probe(calls);
    CPosixThread* thread = probe.threadBase();

    callSlot<>(thread, 2);
    callSlot<>(thread, 3);
    callSlot<>(thread, 4);
    callSlot<>(static_cast<CSI_base*>(&probe), 9);

    EXPECT_EQ(calls, (Calls{"start", "join", "run", "run"}));
}

TEST(VirtualSlots, TheCompleteDestructorSlotDestroysTheObjectWithoutFreeingIt) {
    Calls calls;
    alignas(SlotProbe) unsigned char storage[sizeof(SlotProbe)];
    auto* probe = new (storage) SlotProbe(calls);

    callSlot<>(static_cast<CSI_base*>(probe), 0);

    EXPECT_EQ(calls, (Calls{"~SlotProbe"}));
}

TEST(VirtualSlots, TheDeletingDestructorSlotDestroysAndFreesTheObject) {
    Calls calls;
    auto probe = std::make_unique<SlotProbe>(calls);

    callSlot<>(static_cast<CSI_base*>(probe.release()), 1);

    EXPECT_EQ(calls, (Calls{"~SlotProbe"}));
}

TEST(VirtualSlots, TheThreadBasesDeletingDestructorSlotFreesTheWholeObject) {
    Calls calls;
    auto probe = std::make_unique<SlotProbe>(calls);

    callSlot<>(probe.release()->threadBase(), 1);

    EXPECT_EQ(calls, (Calls{"~SlotProbe"}));
}

TEST(HostBaseLayout, TheDriverBaseMembersFollowTheTablePointerAtThePinnedOffsets) {
    const layouttest::PinnedLayout* pinned = layouttest::pinnedLayout();
    ASSERT_NE(pinned, nullptr) << "no layout of the host contract is pinned for this target ABI";
    Calls calls;
    const SlotProbe probe(calls);

    EXPECT_EQ(sizeof(CSI_base), pinned->hostBase.size) << pinned->abi;
    EXPECT_EQ(probe.hostBaseMemberOffsets(), pinned->hostBase.offsets) << pinned->abi;
}

TEST(HostBaseLayout, TheDriverBaseStartsTheDriverObjectAndTheThreadBaseFollowsIt) {
    const layouttest::PinnedLayout* pinned = layouttest::pinnedLayout();
    ASSERT_NE(pinned, nullptr) << "no layout of the host contract is pinned for this target ABI";
    Calls calls;
    const SlotProbe probe(calls);

    EXPECT_EQ(static_cast<const void*>(static_cast<const CSI_base*>(&probe)),
              static_cast<const void*>(&probe));
    EXPECT_EQ(sizeof(CPosixThread), pinned->threadBase.size) << pinned->abi;
    EXPECT_EQ(probe.threadBaseOffset(), static_cast<std::ptrdiff_t>(pinned->hostBase.size))
        << pinned->abi;
}
