// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "Arp/Plc/AnsiC/Domain/PlcOperationHandler.h"
#include "axlsim/configuration/LoopConfig.h"
#include "vplc/Module.h"

namespace axlsim {

// A configuration as axlsim reads it: the host records of every driver, the bus, the scenario,
// and the models of the plant and the host that close the loop. Texts are kept exactly as written,
// since the driver gets them as they stand.
struct Config {
    struct Service {
        uint32_t eventId = 0;
        std::string name;
        std::string type;  // the service text, passed to the driver as written
        std::map<std::string, std::string> params;
    };

    struct Driver {
        std::string name;
        std::string serviceName;
        std::string deviceType;
        std::map<std::string, std::string> params;
        std::map<unsigned, uint16_t> mappings;  // event id -> nDataSize
        std::map<unsigned, Service> services;   // service key -> service
        std::string path;                       // where it stands in the file: "" or "/drivers/1"
    };

    // Sets a pin of a module's terminal: a digital input to 0 or 1, an analog input channel to a
    // raw IB IL word.
    struct Input {
        int position = 1;
        int pin = 0;
        uint16_t value = 0;
        std::string source{};  // who asked for it, when not the scenario: "api"
    };

    // One host event for a driver's receiveEvent; no payload stands for a null pData.
    struct Event {
        int driver = 0;
        uint32_t id = 0;
        std::optional<std::vector<uint8_t>> payload;
        uint32_t size = 0;
        std::string source{};
    };

    struct Plc {
        PlcOperation operation = PlcOperation_None;
        std::string source{};
    };

    struct Step {
        std::chrono::milliseconds at{0};
        std::variant<std::monostate, Input, Event, Plc> action;  // monostate: a note only
        std::string note;
        std::string path;  // "/scenario/3"
    };

    std::string file;
    std::string description;
    std::vector<Driver> drivers;
    bool severalDrivers = false;  // written as "drivers": every output names the driver
    std::vector<vplc::Module> bus;
    std::vector<Step> scenario;  // in time order
    std::vector<PlantModel> plant;
    std::vector<Route> host;
    std::chrono::milliseconds end{0};
    bool expectStop = false;
};

}  // namespace axlsim
