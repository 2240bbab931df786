// SPDX-License-Identifier: MIT
#include "InputChanger.h"

#include <algorithm>

namespace soak {

InputChanger::InputChanger(vplc::Station& station, std::vector<Input> inputs, uint32_t seed)
    : station_(station), inputs_(std::move(inputs)), random_(seed) {}

void InputChanger::start() {
    thread_ = std::jthread([this](std::stop_token stop) { run(stop); });
}

void InputChanger::stop() {
    thread_.request_stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool InputChanger::isSoakWord(uint16_t word) {
    const unsigned high = word >> 8;
    return high % 2 == 0 && (word & 0xFFu) == 255u - high;
}

std::chrono::milliseconds InputChanger::nextHold() {
    if (std::uniform_int_distribution<int>(0, 9)(random_) < 7) {
        return std::chrono::milliseconds(std::uniform_int_distribution<int>(2, 60)(random_));
    }
    return std::chrono::milliseconds(std::uniform_int_distribution<int>(150, 400)(random_));
}

uint16_t InputChanger::nextValue(std::size_t input, uint16_t current) {
    if (!inputs_[input].analog) {
        return current == 0 ? 1 : 0;
    }
    uint16_t word = current;
    while (word == current) {
        const unsigned k = 2u * std::uniform_int_distribution<unsigned>(0, 127)(random_);
        word = static_cast<uint16_t>((k << 8) | (255u - k));
    }
    return word;
}

void InputChanger::run(const std::stop_token& stop) {
    const Time begin = std::chrono::steady_clock::now();
    // The terminals start at 0; that is the first value each input holds.
    std::vector<Hold> current;
    std::vector<Time> due;
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        current.push_back({i, 0, begin, begin});
        due.push_back(begin + nextHold());
    }
    std::unique_lock lock(mutex_);
    for (;;) {
        const std::size_t input =
            static_cast<std::size_t>(std::min_element(due.begin(), due.end()) - due.begin());
        if (wake_.wait_until(lock, stop, due[input], [&stop] { return stop.stop_requested(); })) {
            break;
        }
        const Input& target = inputs_[input];
        const uint16_t value = nextValue(input, current[input].value);
        current[input].ended = std::chrono::steady_clock::now();
        holds_.push_back(current[input]);
        if (target.analog) {
            station_.setAnalogInput(target.position, target.pin, value);
        } else {
            station_.setDigitalInput(target.position, target.pin, value != 0);
        }
        const Time now = std::chrono::steady_clock::now();
        current[input] = {input, value, now, now};
        due[input] = now + nextHold();
    }
    const Time end = std::chrono::steady_clock::now();
    for (Hold& hold : current) {
        hold.ended = end;
        holds_.push_back(hold);
    }
}

}  // namespace soak
