// SPDX-License-Identifier: MIT
#include "axlsim/run/BusWatch.h"

namespace axlsim {

namespace {

constexpr std::string_view kWriteToBus = "ArpPlcAxio_WriteFromGdsToAxio";

}  // namespace

BusWatch::BusWatch(vplc::Station& station, Timeline& timeline)
    : station_(station), timeline_(timeline) {}

int BusWatch::writes() const {
    return station_.calls(kWriteToBus);
}

void BusWatch::recordSince(int before, int driver) const {
    const int after = writes();
    for (int write = before; write < after; ++write) {
        timeline_.add(driver, Happening::BusWrite{busOutputs()});
    }
}

std::vector<std::vector<uint8_t>> BusWatch::busOutputs() const {
    return ofEveryModule(&vplc::Station::outputsOnBus);
}

std::vector<std::vector<uint8_t>> BusWatch::gdsOutputs() const {
    return ofEveryModule(&vplc::Station::outputsInGds);
}

std::vector<std::vector<uint8_t>> BusWatch::ofEveryModule(
    std::vector<uint8_t> (vplc::Station::*read)(int position) const) const {
    std::vector<std::vector<uint8_t>> outputs;
    const int modules = static_cast<int>(station_.modules().size());
    for (int position = 1; position <= modules; ++position) {
        outputs.push_back((station_.*read)(position));
    }
    return outputs;
}

}  // namespace axlsim
