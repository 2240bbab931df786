// SPDX-License-Identifier: MIT
#pragma once

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "HostRecords.h"
#include "orbel/HostObserver.h"
#include "orbel/ObserverRegistration.h"

class CSI_base;

namespace orbel {

struct LogLine {
    const CSI_base* driver = nullptr;
    int level = 0;
    std::string format;
    std::string text;
};

struct Publication {
    const CSI_base* driver = nullptr;
    uint32_t id = 0;
    uint32_t size = 0;
    std::vector<uint8_t> bytes;  // the payload as it was when published; empty for a null pData
};

struct Stop {
    const CSI_base* driver = nullptr;
    bool hasService = false;
    stServiceParams_t service;  // a copy; default-constructed for the driver-wide overload
    std::string message;
};

struct ThreadStart {
    const CSI_base* driver = nullptr;
    std::thread::id thread;
    pthread_t handle{};  // the driver thread itself, e.g. for pthread_kill
};

struct ThreadExit {
    const CSI_base* driver = nullptr;
    std::string how;
};

// Records everything the host library reports, for tests and tools. Registered as an observer
// for its whole lifetime. Every query returns a copy, in the order of the events; given a driver,
// it keeps only that driver's entries (null: the entries of no driver).
class Recorder final : public HostObserver {
public:
    // No driver given: the entries of all drivers.
    using DriverFilter = std::optional<const CSI_base*>;

    std::vector<LogLine> logs(DriverFilter driver = std::nullopt) const;
    std::vector<Publication> published(DriverFilter driver = std::nullopt) const;
    std::vector<Stop> stops(DriverFilter driver = std::nullopt) const;
    std::vector<ThreadStart> threadStarts(DriverFilter driver = std::nullopt) const;
    std::vector<ThreadExit> threadExits(DriverFilter driver = std::nullopt) const;

    void clear();

    // Waits until `condition` holds, re-checking it whenever something new is recorded. The
    // condition runs without the recorder's lock, so it may use the queries. False on timeout.
    bool waitUntil(const std::function<bool()>& condition,
                   std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

private:
    void logged(const CSI_base* driver, int level, std::string_view format,
                std::string_view text) override;
    void published(const CSI_base* driver, uint32_t id, uint32_t size,
                   std::span<const uint8_t> payload) override;
    void stopped(const CSI_base* driver, const stServiceParams_t* service,
                 std::string_view message) override;
    void threadStarted(const CSI_base* driver) override;
    void threadEnded(const CSI_base* driver, std::string_view how) override;

    template <class Record>
    std::vector<Record> select(const std::vector<Record>& records, DriverFilter driver) const;
    template <class Record>
    void add(std::vector<Record>& records, Record record);

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    uint64_t version_ = 0;
    std::vector<LogLine> logs_;
    std::vector<Publication> publications_;
    std::vector<Stop> stops_;
    std::vector<ThreadStart> threadStarts_;
    std::vector<ThreadExit> threadExits_;
    ObserverRegistration registration_{*this};
};

}  // namespace orbel
