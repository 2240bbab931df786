// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "axlsim/configuration/Config.h"

namespace axlsim {

// What the event ids of each driver's configuration stand for: the one place that knows which
// payload an id carries, for the scenario's events and for showing published values.
class EventCatalog {
public:
    enum class Payload {
        Digital,  // one byte, 0 or 1
        Analog,   // a native float in the first four bytes
        Bytes,    // anything else: shown as it is
    };

    // An event id that a driver publishes: the id of one of its input services.
    struct Published {
        uint32_t id = 0;
        Payload payload = Payload::Bytes;
        uint32_t size = 0;  // nSize of the published events: the mapping's size, 0 without one
        std::string serviceName;
    };

    // The kind of service that receives an event id in a driver.
    enum class Receiver {
        None,     // no output or restart service: the driver stops on it
        Digital,  // a "DigitalOut" service: one byte
        Analog,   // an "AnalogOut" service: a native float
        Restart,  // a "RestartDevice" service
    };

    using Value = std::variant<uint8_t, float>;

    explicit EventCatalog(const std::vector<Config::Driver>& drivers);

    // True when the id drives an "AnalogOut" service of the driver: its events carry a float.
    bool feedsAnalogOutput(int driver, uint32_t id) const;

    // An id of several services is taken as analog first, as the scenario's events are.
    Receiver receiverOf(int driver, uint32_t id) const;

    // The value of a published payload: the first byte for the id of a "DigitalIn" service, the
    // float for an "AnalogIn" service when the payload has four bytes or more.
    std::optional<Value> publishedValue(int driver, uint32_t id,
                                        std::span<const uint8_t> payload) const;

    // The ids a driver's input services publish, in the order of the service keys, each once.
    std::vector<Published> published(int driver) const;

    // The input service whose events carry `id`, if any.
    const Config::Service* inputService(int driver, uint32_t id) const;

private:
    const std::vector<Config::Driver>* drivers_;
};

}  // namespace axlsim
