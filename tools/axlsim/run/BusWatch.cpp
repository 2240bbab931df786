// SPDX-License-Identifier: MIT
#include "axlsim/run/BusWatch.h"

namespace axlsim {

namespace {

constexpr std::string_view kWriteToBus = "ArpPlcAxio_WriteFromGdsToAxio";

}  // namespace

BusWatch::BusWatch(vplc::Plant& plant, Timeline& timeline) : plant_(plant), timeline_(timeline) {}

int BusWatch::writes() const {
    return plant_.calls(kWriteToBus);
}

void BusWatch::recordSince(int before, int driver) const {
    const int after = writes();
    for (int write = before; write < after; ++write) {
        timeline_.add(driver, Happening::BusWrite{busOutputs()});
    }
}

std::vector<std::vector<uint8_t>> BusWatch::busOutputs() const {
    return ofEveryModule(&vplc::Plant::outputsOnBus);
}

std::vector<std::vector<uint8_t>> BusWatch::gdsOutputs() const {
    return ofEveryModule(&vplc::Plant::outputsInGds);
}

std::vector<std::vector<uint8_t>> BusWatch::ofEveryModule(
    std::vector<uint8_t> (vplc::Plant::*read)(int position) const) const {
    std::vector<std::vector<uint8_t>> outputs;
    const int modules = static_cast<int>(plant_.modules().size());
    for (int position = 1; position <= modules; ++position) {
        outputs.push_back((plant_.*read)(position));
    }
    return outputs;
}

}  // namespace axlsim
