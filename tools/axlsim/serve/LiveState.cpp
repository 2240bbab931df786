// SPDX-License-Identifier: MIT
#include "axlsim/serve/LiveState.h"

#include <cstring>

#include "axlsim/base/Overloaded.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/run/ProcessData.h"

namespace axlsim {

namespace {

using Json = nlohmann::ordered_json;

Json milliseconds(std::chrono::nanoseconds t) {
    return Json::parse(millisecondsText(t));
}

Json pinOf(const Config::Service& service) {
    const auto pin = service.params.find("PinNum");
    if (pin == service.params.end()) {
        return nullptr;
    }
    try {
        return std::stoi(pin->second);
    } catch (const std::exception&) {
        return pin->second;
    }
}

Json moduleState(int position, vplc::Module module, const vplc::Station& station) {
    Json state;
    state["position"] = position;
    state["type"] = std::string(vplc::orderName(module));
    const std::vector<uint8_t> inputs = station.inputsOnBus(position);
    if (module == vplc::Module::DI8_DO8) {
        const uint8_t outputs = station.digitalOutputsOnBus(position);
        Json di = Json::array();
        Json doo = Json::array();
        for (int pin = 0; pin < 8; ++pin) {
            di.push_back(digitalPin(inputs, pin) ? 1 : 0);
            doo.push_back((outputs >> pin) & 1);
        }
        state["DI"] = di;
        state["DO"] = doo;
    } else {
        Json ai = Json::array();
        Json ao = Json::array();
        for (int channel = 0; channel < 2; ++channel) {
            ai.push_back(analogWord(inputs, channel));
            ao.push_back(station.analogOutputOnBus(position, channel));
        }
        state["AI"] = ai;
        state["AO"] = ao;
    }
    return state;
}

}  // namespace

LiveState::LiveState(const Config& config)
    : config_(config), catalog_(config.drivers), drivers_(config.drivers.size()) {}

void LiveState::saw(const Happening& happening) {
    const int driver = happening.driver;
    std::visit(Overloaded{
                   [&](const Happening::Publish& publish) {
                       published_[{driver, publish.id}] = publish.bytes;
                   },
                   [&](const Happening::Event& event) {
                       if (event.payload) {
                           received_[{driver, event.id}] = *event.payload;
                       }
                   },
                   [&](const Happening::Stop& stop) {
                       if (driver >= 0 && static_cast<std::size_t>(driver) < drivers_.size()) {
                           drivers_[static_cast<std::size_t>(driver)] = {true, stop.message};
                       }
                   },
                   [&](const Happening::Restart&) { ++restarts_; },
                   [](const auto&) {},
               },
               happening.what);
}

Json LiveState::lastValue(int driver, const Config::Service& service) const {
    const auto key = std::make_pair(driver, service.eventId);
    if (service.type == "DigitalIn" || service.type == "AnalogIn") {
        const auto published = published_.find(key);
        if (published == published_.end()) {
            return nullptr;
        }
        const auto value = catalog_.publishedValue(driver, service.eventId, published->second);
        if (!value) {
            return nullptr;
        }
        if (const auto* byte = std::get_if<uint8_t>(&*value)) {
            return *byte;
        }
        return floatForJson(std::get<float>(*value));
    }
    const auto received = received_.find(key);
    if (received == received_.end() || received->second.empty()) {
        return nullptr;
    }
    const std::vector<uint8_t>& bytes = received->second;
    switch (catalog_.receiverOf(driver, service.eventId)) {
        case EventCatalog::Receiver::Analog:
            if (bytes.size() >= sizeof(float)) {
                float number = 0;
                std::memcpy(&number, bytes.data(), sizeof number);
                return floatForJson(number);
            }
            return nullptr;
        case EventCatalog::Receiver::Digital:
            return bytes[0];
        default:
            return nullptr;
    }
}

Json LiveState::render(const Clock& clock, const vplc::Station& station) const {
    Json state;
    state["t_ms"] = milliseconds(clock.now);
    state["paused"] = clock.paused;
    state["speed"] = clock.maxSpeed ? Json("max") : Json(clock.speed);
    Json bus = Json::array();
    for (std::size_t i = 0; i < config_.bus.size(); ++i) {
        bus.push_back(moduleState(static_cast<int>(i + 1), config_.bus[i], station));
    }
    state["bus"] = bus;
    Json drivers = Json::array();
    for (std::size_t i = 0; i < config_.drivers.size(); ++i) {
        const Config::Driver& driver = config_.drivers[i];
        const int index = static_cast<int>(i);
        Json entry;
        entry["index"] = index;
        entry["name"] = driver.name;
        entry["stopped"] = drivers_[i].stopped;
        entry["stop_message"] = drivers_[i].stopped ? Json(drivers_[i].message) : Json(nullptr);
        Json services = Json::array();
        for (const auto& [key, service] : driver.services) {
            Json item;
            item["key"] = key;
            item["eventId"] = service.eventId;
            item["type"] = service.type;
            item["name"] = service.name;
            item["pin"] = pinOf(service);
            item["last"] = lastValue(index, service);
            services.push_back(item);
        }
        entry["services"] = services;
        drivers.push_back(entry);
    }
    state["drivers"] = drivers;
    state["restarts"] = restarts_;
    return state;
}

}  // namespace axlsim
