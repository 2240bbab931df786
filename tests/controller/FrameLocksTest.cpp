// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <latch>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Arp/Plc/AnsiC/Gds/DataLayout.h"
#include "Arp/Plc/AnsiC/Io/Axio.h"
#include "BusFrames.h"
#include "GdsAccess.h"
#include "vplc/Station.h"

using controllertest::acquire;
using controllertest::lastError;
using vplc::Frame;
using vplc::Module;
using vplc::Station;
using namespace std::chrono_literals;

namespace {

// An ordered record of what the threads of a test did.
class Steps {
public:
    void add(std::string step) {
        std::lock_guard lock(mutex_);
        steps_.push_back(std::move(step));
    }
    std::vector<std::string> all() const {
        std::lock_guard lock(mutex_);
        return steps_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> steps_;
};

class FrameLocks : public controllertest::BusFrames {};

}  // namespace

TEST_F(FrameLocks, BeginHandsOutTheFramesData) {
    station_.setFrameBytes(Frame::In, 2, {0x5A});
    char* data = nullptr;

    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_EQ(static_cast<unsigned char>(data[2]), 0x5A);
    ASSERT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(FrameLocks, WhatIsWrittenBetweenBeginWriteAndEndWriteIsInTheFrame) {
    char* data = nullptr;

    ASSERT_TRUE(ArpPlcGds_BeginWrite(out_, &data));
    data[2] = 0x28;
    ASSERT_TRUE(ArpPlcGds_EndWrite(out_));

    EXPECT_EQ(station_.outputsInGds(1), (std::vector<uint8_t>{0x28}));
}

TEST_F(FrameLocks, TwoReadersHoldTheLockAtOnce) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));

    auto secondReader = std::async(std::launch::async, [this] {
        char* hisData = nullptr;
        bool begun = ArpPlcGds_BeginRead(in_, &hisData);
        int locks = station_.openLocks();
        ArpPlcGds_EndRead(in_);
        return std::make_pair(begun, locks);
    });

    ASSERT_EQ(secondReader.wait_for(60s), std::future_status::ready);
    EXPECT_EQ(secondReader.get(), std::make_pair(true, 2));
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(FrameLocks, AWriterWaitsUntilTheReaderHasEnded) {
    Steps steps;
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    std::latch writerStarting(1);

    std::thread writer([&] {
        char* hisData = nullptr;
        writerStarting.count_down();
        if (ArpPlcGds_BeginWrite(in_, &hisData)) {
            steps.add("writer has the lock");
        }
        ArpPlcGds_EndWrite(in_);
    });
    writerStarting.wait();
    steps.add("reader ends");
    ASSERT_TRUE(ArpPlcGds_EndRead(in_));
    writer.join();

    EXPECT_EQ(steps.all(), (std::vector<std::string>{"reader ends", "writer has the lock"}));
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(FrameLocks, AReaderWaitsUntilTheWriterHasEnded) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginWrite(in_, &data));
    data[2] = 1;
    std::latch readerStarting(1);

    auto reader = std::async(std::launch::async, [&] {
        char* hisData = nullptr;
        readerStarting.count_down();
        int seen = -1;
        if (ArpPlcGds_BeginRead(in_, &hisData)) {
            seen = hisData[2];
        }
        ArpPlcGds_EndRead(in_);
        return seen;
    });
    readerStarting.wait();
    data[2] = 2;
    ASSERT_TRUE(ArpPlcGds_EndWrite(in_));

    EXPECT_EQ(reader.get(), 2);
}

TEST_F(FrameLocks, LocksOnTheTwoFramesAreIndependent) {
    char* inData = nullptr;
    char* outData = nullptr;

    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &inData));
    EXPECT_TRUE(ArpPlcGds_BeginWrite(out_, &outData));
    EXPECT_EQ(station_.openLocks(), 2);
    EXPECT_TRUE(ArpPlcGds_EndWrite(out_));
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(FrameLocks, TwoHandlesOfOneFrameShareItsLock) {
    TGdsBuffer* secondIn = acquire("1:IN");
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginWrite(in_, &data));

    EXPECT_FALSE(ArpPlcGds_BeginRead(secondIn, &data));
    EXPECT_TRUE(ArpPlcGds_EndWrite(secondIn));
    EXPECT_EQ(station_.openLocks(), 0);
    ArpPlcIo_ReleaseGdsBuffer(secondIn);
}

TEST_F(FrameLocks, AnEndWithoutABeginFailsUnlocksNothingAndIsCounted) {
    EXPECT_FALSE(ArpPlcGds_EndRead(in_));
    EXPECT_EQ(lastError(),
              "ArpPlcGds_EndRead: the calling thread holds no read lock on buffer '1:IN'");
    EXPECT_FALSE(ArpPlcGds_EndWrite(out_));
    EXPECT_EQ(lastError(),
              "ArpPlcGds_EndWrite: the calling thread holds no write lock on buffer '1:OUT'");
    EXPECT_EQ(station_.unmatchedEnds(), 2);
}

TEST_F(FrameLocks, AnEndReadAfterABeginWriteLeavesTheWriteLockInPlace) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginWrite(out_, &data));

    EXPECT_FALSE(ArpPlcGds_EndRead(out_));
    EXPECT_EQ(station_.openLocks(), 1);
    EXPECT_EQ(station_.unmatchedEnds(), 1);
    EXPECT_TRUE(ArpPlcGds_EndWrite(out_));
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(FrameLocks, AnEndOnAThreadThatDidNotBeginDoesNotUnlock) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));

    std::thread other([this] { EXPECT_FALSE(ArpPlcGds_EndRead(in_)); });
    other.join();

    EXPECT_EQ(station_.openLocks(), 1);
    EXPECT_EQ(station_.unmatchedEnds(), 1);
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(FrameLocks, ASecondBeginOnTheSameThreadFailsInsteadOfDeadlocking) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    char* untouched = reinterpret_cast<char*>(0x10);
    char* secondData = untouched;

    EXPECT_FALSE(ArpPlcGds_BeginWrite(in_, &secondData));
    EXPECT_EQ(lastError(),
              "ArpPlcGds_BeginWrite: the calling thread already holds a lock on buffer '1:IN'");
    EXPECT_EQ(secondData, untouched);
    EXPECT_FALSE(ArpPlcGds_BeginRead(in_, &secondData));
    EXPECT_EQ(station_.nestedBegins(), 2);
    EXPECT_EQ(station_.openLocks(), 1);
    EXPECT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(FrameLocks, OpenLocksCountsBeginsNotYetEnded) {
    char* data = nullptr;
    EXPECT_EQ(station_.openLocks(), 0);
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    EXPECT_EQ(station_.openLocks(), 1);
    ASSERT_TRUE(ArpPlcGds_EndRead(in_));
    EXPECT_EQ(station_.openLocks(), 0);
}

TEST_F(FrameLocks, ABusCopyOnAThreadHoldingTheFrameFailsInsteadOfDeadlocking) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));
    station_.setDigitalInputs(1, 0xFF);

    EXPECT_FALSE(ArpPlcAxio_ReadFromAxioToGds(0));
    EXPECT_EQ(lastError(),
              "ArpPlcAxio_ReadFromAxioToGds: the calling thread holds a lock on buffer '1:IN'");
    EXPECT_EQ(data[2], 0);
    ASSERT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(FrameLocks, TheStationsViewsUseTheLockTheCallingThreadHolds) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginWrite(out_, &data));
    data[2] = 0x11;

    EXPECT_EQ(station_.outputsInGds(1), (std::vector<uint8_t>{0x11}));
    station_.setFrameBytes(Frame::Out, 2, {0x22});
    EXPECT_EQ(data[2], 0x22);
    ASSERT_TRUE(ArpPlcGds_EndWrite(out_));
}

TEST_F(FrameLocks, TheStationCannotWriteAFrameTheCallingThreadOnlyReads) {
    char* data = nullptr;
    ASSERT_TRUE(ArpPlcGds_BeginRead(in_, &data));

    EXPECT_THROW(station_.setFrameBytes(Frame::In, 2, {0x22}), std::logic_error);
    ASSERT_TRUE(ArpPlcGds_EndRead(in_));
}

TEST_F(FrameLocks, ManyThreadsReadingWritingAndCopyingAtOnceAreAllCounted) {
    constexpr int kRounds = 300;
    auto reader = [this] {
        for (int round = 0; round < kRounds; ++round) {
            char* data = nullptr;
            if (ArpPlcGds_BeginRead(in_, &data)) {
                static_cast<void>(data[2]);
            }
            ArpPlcGds_EndRead(in_);
            ArpPlcAxio_ReadFromAxioToGds(0);
        }
    };
    auto writer = [this] {
        for (int round = 0; round < kRounds; ++round) {
            char* data = nullptr;
            if (ArpPlcGds_BeginWrite(out_, &data)) {
                data[2] = static_cast<char>(round);
            }
            ArpPlcGds_EndWrite(out_);
            ArpPlcAxio_WriteFromGdsToAxio(0);
        }
    };
    std::thread scan(reader);
    std::thread events(writer);
    for (int round = 0; round < kRounds; ++round) {
        station_.setDigitalInputs(1, static_cast<uint8_t>(round));
    }
    scan.join();
    events.join();

    EXPECT_EQ(station_.calls("ArpPlcGds_BeginRead"), kRounds);
    EXPECT_EQ(station_.calls("ArpPlcAxio_WriteFromGdsToAxio"), kRounds);
    EXPECT_EQ(station_.unmatchedEnds(), 0);
    EXPECT_EQ(station_.openLocks(), 0);
    EXPECT_EQ(station_.digitalOutputsOnBus(1), static_cast<uint8_t>(kRounds - 1));
}
