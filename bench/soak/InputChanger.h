// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <random>
#include <stop_token>
#include <thread>
#include <vector>

#include "vplc/Station.h"

class CSI_base;

namespace soak {

// Changes the inputs on the modules' terminals from a thread of its own, each input on its own
// schedule: most values last a few milliseconds (less than a scan), some several scans. Every
// value held is recorded with the wall time it began and ended.
//
// A digital input toggles. An analog input takes words of the form (k << 8) | (255 - k) with k
// even: any two differ by more than the driver's dead band, and a word torn from two of them is
// never of that form.
class InputChanger {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Input {
        const CSI_base* driver;
        uint32_t eventId;  // the event that publishes it
        int position;
        int pin;  // or channel
        bool analog;
    };

    struct Hold {
        std::size_t input;  // index into the inputs
        uint16_t value;     // 0 or 1, or the raw word
        Time began;
        Time ended;
    };

    InputChanger(vplc::Station& station, std::vector<Input> inputs, uint32_t seed);
    InputChanger(const InputChanger&) = delete;
    InputChanger& operator=(const InputChanger&) = delete;

    void start();
    // Also when the changer goes.
    void stop();

    const std::vector<Input>& inputs() const { return inputs_; }
    // Every value held, once stopped.
    const std::vector<Hold>& holds() const { return holds_; }

    static bool isSoakWord(uint16_t word);

private:
    void run(const std::stop_token& stop);
    std::chrono::milliseconds nextHold();
    uint16_t nextValue(std::size_t input, uint16_t current);

    vplc::Station& station_;
    std::vector<Input> inputs_;
    std::mt19937 random_;
    std::vector<Hold> holds_;
    std::mutex mutex_;
    std::condition_variable_any wake_;  // woken by a stop request
    std::jthread thread_;
};

}  // namespace soak
