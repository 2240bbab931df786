// SPDX-License-Identifier: MIT
#include "ConfigurationFuzzer.h"

#include <chrono>
#include <memory>
#include <set>
#include <stdexcept>
#include <string_view>

#include "ConfigurationText.h"
#include "Findings.h"
#include "RecordComparison.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverRig.h"
#include "hosting/HostCalls.h"
#include "orbel/Recorder.h"
#include "vplc/Station.h"
#include "vplc/VirtualClock.h"

namespace fuzz {

namespace {

constexpr std::string_view kVersionFormat =
    "CPLCNext: Drivername[%s]-Version [%d.%d.%d] - Service[%s]";

const std::set<std::string_view> kFailureFormats = {
    "Digital input pin with number &d is not available. Valid numbers are %s.",
    "Analog input pin with number &d is not available. Valid numbers are %s",
    "Digital output pin with number &d is not available. Valid numbers are %s.",
    "Analog output pin with number &d is not available. Valid numbers are %s.",
    "Digital input pin with number %d is already in use.",
    "Analog input pin with number %d is already in use.",
    "Digital output pin with number %d is already in use.",
    "Analog output pin with number %d is already in use.",
    "Could not register service for analog input pin %i",
    "Service %d not available for AIAO Module",
    "Failed to get pointer to gds buffer: %s",
    "Can't release buffer: %s",
    "Can't get offset to port: %s",
    "Can't begin read: %s",
    "Can't begin write: %s",
    "Can't unlock buffer: %s",
};

const std::set<std::string_view> kStopMessages = {
    "Unsupported service type.",
    "Invalid digital input number.",
    "Invalid analog input number.",
    "Invalid digital output pin number.",
    "Invalid analog output number",
    "Pin already in use",
    "Pin already in use.",
    "Can't register service for digital input pin.",
    "Could not register service for analog input pin",
    "Could not register service for digital output pin.",
    "Can't register service for analog output pin",
};

// Runs `action`; an exception may only be one of the two "stoi" exceptions. Returns whether the
// action completed.
template <class Action>
bool completesOrThrowsStoi(Findings& findings, const std::string& what, Action action) {
    try {
        action();
        return true;
    } catch (const std::invalid_argument& e) {
        findings.expect(std::string_view(e.what()) == "stoi",
                        what + " threw std::invalid_argument(\"" + e.what() + "\")");
    } catch (const std::out_of_range& e) {
        findings.expect(std::string_view(e.what()) == "stoi",
                        what + " threw std::out_of_range(\"" + e.what() + "\")");
    } catch (const std::exception& e) {
        findings.add(what + " threw an unexpected exception: " + e.what());
    } catch (...) {
        findings.add(what + " threw something that is not a std::exception");
    }
    return false;
}

std::string versionLine(const stSP_Params_t& params) {
    return "CPLCNext: Drivername[Plc Next]-Version [1.3.2] - Service[" +
           std::string(params.sServiceName.c_str()) + "]";
}

// The one position whose module the driver may write: its consecutive number, if the module
// there is the kind the device type names.
bool mayWrite(const ConfigurationText& config, int position) {
    const auto it = config.params.mapParams.find("Consecutive Number");
    if (it == config.params.mapParams.end()) {
        return false;
    }
    const std::string& type = config.params.sDeviceType;
    const vplc::Module module = config.bus[static_cast<std::size_t>(position - 1)];
    const bool served = (type == "AXL_F_DI8_1_DO8_1" && module == vplc::Module::DI8_DO8) ||
                        (type == "AXL_F_AI2_AO2" && module == vplc::Module::AI2_AO2);
    if (!served) {
        return false;
    }
    // The driver reads the setting as std::stoi does; a setting it cannot read made no driver.
    try {
        return std::stoi(it->second) == position;
    } catch (const std::logic_error&) {
        return false;
    }
}

void checkOutputs(Findings& findings, const ConfigurationText& config,
                  const vplc::Station& station) {
    for (int position = 1; position <= static_cast<int>(config.bus.size()); ++position) {
        if (mayWrite(config, position)) {
            continue;
        }
        for (uint8_t byte : station.outputsOnBus(position)) {
            findings.expect(byte == 0, "an output of the module at position " +
                                           std::to_string(position) + " was driven");
        }
        for (uint8_t byte : station.outputsInGds(position)) {
            findings.expect(byte == 0, "the GDS outputs of the module at position " +
                                           std::to_string(position) + " were written");
        }
    }
}

void checkPublications(Findings& findings, const ConfigurationText& config,
                       const orbel::Recorder& recorder) {
    std::set<uint32_t> inputIds;
    for (const auto& [key, service] : config.services) {
        if (service.sServiceType == "DigitalIn" || service.sServiceType == "AnalogIn") {
            inputIds.insert(service.nEventId);
        }
    }
    for (const orbel::Publication& publication : recorder.published()) {
        findings.expect(
            inputIds.count(publication.id) == 1,
            "published event " + std::to_string(publication.id) + ", which is no input service's");
        const auto mapping = config.mappings.find(publication.id);
        const uint32_t size = mapping == config.mappings.end() ? 0 : mapping->second.nDataSize;
        findings.expect(publication.size == size,
                        "published event " + std::to_string(publication.id) + " with size " +
                            std::to_string(publication.size));
    }
}

void checkLog(Findings& findings, const stSP_Params_t& params, const orbel::Recorder& recorder) {
    int versionLines = 0;
    for (const orbel::LogLine& line : recorder.logs()) {
        if (line.format == kVersionFormat) {
            ++versionLines;
            findings.expect(line.level == 4 && line.text == versionLine(params),
                            "version line \"" + line.text + "\"");
            continue;
        }
        findings.expect(line.level == 2 && kFailureFormats.count(line.format) == 1,
                        "log line " + std::to_string(line.level) + " \"" + line.format + "\"");
    }
    findings.expect(versionLines == 1, std::to_string(versionLines) + " version lines");
}

}  // namespace

std::string ConfigurationFuzzer::run(std::span<const uint8_t> input) {
    const ConfigurationText config = ConfigurationText::parse(input);
    Findings findings;
    hosting::DriverRig rig(config.bus);
    const orbel::Recorder& recorder = rig.recorder();
    vplc::VirtualClock& clock = rig.clock();
    vplc::Station& station = rig.station();
    bool releaseFails = false;
    bool unlockFails = false;
    for (const ConfigurationText::Fault& fault : config.faults) {
        station.inject(fault.call, vplc::Fault::times(fault.count, "fuzzed failure"));
        releaseFails |= std::string_view(fault.call) == "ArpPlcIo_ReleaseGdsBuffer";
        unlockFails |= std::string_view(fault.call).starts_with("ArpPlcGds_End");
    }

    // The factory gets the records' own tables, so that what it does to them shows.
    hosting::DriverConfig handed(config.params.sDeviceType);
    handed.params = config.params;
    handed.mappings = config.mappings;
    handed.services = config.services;
    bool created = false;
    completesOrThrowsStoi(findings, "CreateSiObject", [&] {
        rig.create(handed);
        created = true;
    });
    findings.expect(sameRecords(handed.mappings, config.mappings) &&
                        sameRecords(handed.services, config.services),
                    "CreateSiObject changed the host's tables");

    if (created) {
        const bool initialised = completesOrThrowsStoi(
            findings, "initialize", [&] { hosting::host::initialize(rig.driver()); });
        clock.settle();
        const auto stops = recorder.stops();
        const bool running = initialised && stops.empty();
        findings.expect(recorder.threadStarts().size() == (running ? 1u : 0u),
                        running ? "no thread after a clean initialize"
                                : "a thread after a stop or an exception");
        findings.expect(stops.size() <= 1, "more than one stop");
        for (const orbel::Stop& stop : stops) {
            findings.expect(kStopMessages.count(stop.message) == 1 && stop.hasService,
                            "stop \"" + stop.message + "\"");
        }
        clock.runFor(std::chrono::milliseconds(250));
        checkOutputs(findings, config, station);
        checkPublications(findings, config, recorder);
        rig.destroy();
    }

    checkLog(findings, config.params, recorder);
    // A failed release leaves its buffer with the platform, and a failed End its lock.
    findings.expect(releaseFails || station.buffersHeld() == 0, "GDS buffers left after deletion");
    findings.expect(unlockFails || station.openLocks() == 0, "frame locks left after deletion");
    findings.expect(recorder.threadExits().size() == recorder.threadStarts().size(),
                    "a thread outlived its driver");
    return findings.text();
}

}  // namespace fuzz
