// SPDX-License-Identifier: MIT
#include "orbel/Recorder.h"

#include <utility>

namespace orbel {

std::vector<LogLine> Recorder::logs(DriverFilter driver) const {
    return select(logs_, driver);
}

std::vector<Publication> Recorder::published(DriverFilter driver) const {
    return select(publications_, driver);
}

std::vector<Stop> Recorder::stops(DriverFilter driver) const {
    return select(stops_, driver);
}

std::vector<ThreadStart> Recorder::threadStarts(DriverFilter driver) const {
    return select(threadStarts_, driver);
}

std::vector<ThreadExit> Recorder::threadExits(DriverFilter driver) const {
    return select(threadExits_, driver);
}

void Recorder::clear() {
    std::lock_guard lock(mutex_);
    logs_.clear();
    publications_.clear();
    stops_.clear();
    threadStarts_.clear();
    threadExits_.clear();
    ++version_;
}

bool Recorder::waitUntil(const std::function<bool()>& condition,
                         std::chrono::milliseconds timeout) const {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    std::unique_lock lock(mutex_);
    for (;;) {
        const uint64_t seen = version_;
        lock.unlock();
        if (condition()) {
            return true;
        }
        lock.lock();
        if (!changed_.wait_until(lock, deadline, [&] { return version_ != seen; })) {
            return false;
        }
    }
}

template <class Record>
std::vector<Record> Recorder::select(const std::vector<Record>& records,
                                     DriverFilter driver) const {
    std::lock_guard lock(mutex_);
    if (!driver) {
        return records;
    }
    std::vector<Record> result;
    for (const Record& record : records) {
        if (record.driver == *driver) {
            result.push_back(record);
        }
    }
    return result;
}

template <class Record>
void Recorder::add(std::vector<Record>& records, Record record) {
    {
        std::lock_guard lock(mutex_);
        records.push_back(std::move(record));
        ++version_;
    }
    changed_.notify_all();
}

void Recorder::logged(const CSI_base* driver, int level, std::string_view format,
                      std::string_view text) {
    add(logs_, LogLine{driver, level, std::string(format), std::string(text)});
}

void Recorder::published(const CSI_base* driver, uint32_t id, uint32_t size,
                         std::span<const uint8_t> payload) {
    add(publications_,
        Publication{driver, id, size, std::vector<uint8_t>(payload.begin(), payload.end())});
}

void Recorder::stopped(const CSI_base* driver, const stServiceParams_t* service,
                       std::string_view message) {
    add(stops_, Stop{driver, service != nullptr, service ? *service : stServiceParams_t{},
                     std::string(message)});
}

void Recorder::threadStarted(const CSI_base* driver) {
    add(threadStarts_, ThreadStart{driver, std::this_thread::get_id(), pthread_self()});
}

void Recorder::threadEnded(const CSI_base* driver, std::string_view how) {
    add(threadExits_, ThreadExit{driver, std::string(how)});
}

}  // namespace orbel
