// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "axlsim/configuration/Pin.h"

namespace axlsim {

// One thing that happened during a run, at a time on the run's clock.
struct Happening {
    // The driver wrote a log line.
    struct Log {
        int level = 0;
        std::string format;
        std::string text;
    };

    // The driver published an event; `bytes` are the nSize payload bytes.
    struct Publish {
        uint32_t id = 0;
        uint32_t size = 0;
        std::vector<uint8_t> bytes;
    };

    // The driver called stopWithError; no event id for the driver-wide overload.
    struct Stop {
        std::string message;
        std::optional<uint32_t> eventId;
    };

    // ArpPlcAxio_WriteFromGdsToAxio: every module's output process data on the bus after the
    // copy, by position from 1.
    struct BusWrite {
        std::vector<std::vector<uint8_t>> outputs;
    };

    // The virtual controller restarted.
    struct Restart {};

    // An exception left the driver during a host call ("create", "initialize" or "event").
    struct Exception {
        std::string where;
        std::string type;
        std::string what;
    };

    // Scenario: a terminal input changed (digital 0 or 1, analog the raw word). The steps of
    // the scenario have no source; those asked for otherwise name it ("api").
    struct Input {
        int position = 0;
        int pin = 0;
        uint16_t value = 0;
        std::string source{};
    };

    // Scenario: the host delivered an event to the driver; no payload for a null pData.
    struct Event {
        uint32_t id = 0;
        uint32_t size = 0;
        std::optional<std::vector<uint8_t>> payload;
        std::string source{};
    };

    // Scenario: the runtime reported a PLC operation.
    struct Plc {
        int operation = 0;
        std::string source{};
    };

    // Scenario: an explanation, or something the host did not do.
    struct Note {
        std::string text;
    };

    // Plant: a model moved an input (digital 0 or 1, analog the raw word).
    struct PlantMove {
        std::string model;  // "wire", "link" or "signal"
        Pin to;
        uint16_t value = 0;
        std::optional<Pin> from;  // the output a wire or link follows
        std::string shape;        // a signal's shape
        // An analog move is worth a line only when a publication of the channel follows it;
        // every move is in the VCD.
        bool shown = true;
    };

    // Host: a route turned a publication into the event that follows it on the timeline.
    struct Routed {
        uint32_t from = 0;
        uint32_t to = 0;
        std::vector<uint8_t> bytes;
    };

    using What = std::variant<Log, Publish, Stop, BusWrite, Restart, Exception, Input, Event, Plc,
                              Note, PlantMove, Routed>;

    std::chrono::nanoseconds t{0};
    int driver = -1;  // the index of the driver concerned; -1 for none
    What what;
};

}  // namespace axlsim
