// SPDX-License-Identifier: MIT
#include "PublicationWatch.h"

#include <cstring>
#include <utility>

namespace fuzz {

namespace {

uint32_t bitsOf(float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

}  // namespace

void PublicationWatch::expectInputs(const CSI_base* driver, std::map<uint32_t, Input> inputs) {
    std::lock_guard lock(mutex_);
    inputs_[driver] = std::move(inputs);
}

void PublicationWatch::analogValueHeld(int channel, float value) {
    std::lock_guard lock(mutex_);
    heldValues_[channel & 1].insert(bitsOf(value));
}

PublicationWatch::Counts PublicationWatch::counts(const CSI_base* driver) const {
    std::lock_guard lock(mutex_);
    const auto it = counts_.find(driver);
    return it == counts_.end() ? Counts{} : it->second;
}

std::string PublicationWatch::takeFindings() {
    std::string text = findings_.text();
    findings_.clear();
    return text;
}

void PublicationWatch::logged(const CSI_base* driver, int level, std::string_view format,
                              std::string_view) {
    std::lock_guard lock(mutex_);
    if (level == 4 &&
        format == "CPLCNext: Device restart requested from Runtime, going for reboot now.") {
        ++counts_[driver].restartNotices;
    } else {
        ++counts_[driver].failureLines;
    }
}

void PublicationWatch::published(const CSI_base* driver, uint32_t id, uint32_t size,
                                 std::span<const uint8_t> payload) {
    std::lock_guard lock(mutex_);
    const auto inputs = inputs_.find(driver);
    if (inputs == inputs_.end() || inputs->second.count(id) == 0) {
        findings_.add("published event " + std::to_string(id) + " that is no input of its driver");
        return;
    }
    const Input& input = inputs->second.at(id);
    if (size != input.size || payload.size() != size) {
        findings_.add("published event " + std::to_string(id) + " with size " +
                      std::to_string(size));
        return;
    }
    if (!input.analog) {
        findings_.expect(payload[0] <= 1, "published digital value " + std::to_string(payload[0]) +
                                              " for event " + std::to_string(id));
        return;
    }
    float value = 0.0f;
    std::memcpy(&value, payload.data(), sizeof value);
    findings_.expect(heldValues_[input.channel & 1].count(bitsOf(value)) == 1,
                     "published analog value " + std::to_string(value) + " for event " +
                         std::to_string(id) + ", which the channel never held");
}

void PublicationWatch::stopped(const CSI_base* driver, const stServiceParams_t*,
                               std::string_view message) {
    std::lock_guard lock(mutex_);
    Counts& counts = counts_[driver];
    ++counts.stops;
    counts.lastStop = std::string(message);
}

}  // namespace fuzz
