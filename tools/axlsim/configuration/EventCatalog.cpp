// SPDX-License-Identifier: MIT
#include "axlsim/configuration/EventCatalog.h"

#include <algorithm>
#include <cstring>

namespace axlsim {

namespace {

constexpr std::size_t kFloatSize = sizeof(float);

}  // namespace

EventCatalog::EventCatalog(const std::vector<Config::Driver>& drivers) : drivers_(&drivers) {}

bool EventCatalog::feedsAnalogOutput(int driver, uint32_t id) const {
    const auto& services = drivers_->at(static_cast<std::size_t>(driver)).services;
    return std::any_of(services.begin(), services.end(), [id](const auto& entry) {
        return entry.second.eventId == id && entry.second.type == "AnalogOut";
    });
}

EventCatalog::Receiver EventCatalog::receiverOf(int driver, uint32_t id) const {
    if (feedsAnalogOutput(driver, id)) {
        return Receiver::Analog;
    }
    Receiver receiver = Receiver::None;
    for (const auto& [key, service] : drivers_->at(static_cast<std::size_t>(driver)).services) {
        if (service.eventId != id) {
            continue;
        }
        if (service.type == "DigitalOut") {
            return Receiver::Digital;
        }
        if (service.type == "RestartDevice") {
            receiver = Receiver::Restart;
        }
    }
    return receiver;
}

const Config::Service* EventCatalog::inputService(int driver, uint32_t id) const {
    for (const auto& [key, service] : drivers_->at(static_cast<std::size_t>(driver)).services) {
        if (service.eventId == id && (service.type == "DigitalIn" || service.type == "AnalogIn")) {
            return &service;
        }
    }
    return nullptr;
}

std::optional<EventCatalog::Value> EventCatalog::publishedValue(
    int driver, uint32_t id, std::span<const uint8_t> payload) const {
    const Config::Service* service = inputService(driver, id);
    if (service == nullptr) {
        return std::nullopt;
    }
    if (service->type == "DigitalIn" && !payload.empty()) {
        return Value(payload[0]);
    }
    if (service->type == "AnalogIn" && payload.size() >= kFloatSize) {
        float value = 0.0f;
        std::memcpy(&value, payload.data(), kFloatSize);
        return Value(value);
    }
    return std::nullopt;
}

std::vector<EventCatalog::Published> EventCatalog::published(int driver) const {
    const Config::Driver& config = drivers_->at(static_cast<std::size_t>(driver));
    std::vector<Published> ids;
    for (const auto& [key, service] : config.services) {
        if (service.type != "DigitalIn" && service.type != "AnalogIn") {
            continue;
        }
        const uint32_t eventId = service.eventId;
        const bool seen = std::any_of(ids.begin(), ids.end(),
                                      [eventId](const Published& p) { return p.id == eventId; });
        if (seen) {
            continue;
        }
        Published published;
        published.id = service.eventId;
        const auto mapping = config.mappings.find(service.eventId);
        published.size = mapping != config.mappings.end() ? mapping->second : 0;
        published.serviceName = service.name;
        if (service.type == "DigitalIn" && published.size >= 1) {
            published.payload = Payload::Digital;
        } else if (service.type == "AnalogIn" && published.size >= kFloatSize) {
            published.payload = Payload::Analog;
        }
        ids.push_back(published);
    }
    return ids;
}

}  // namespace axlsim
