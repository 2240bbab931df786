// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

#include "DriverFactory.h"
#include "SI_base.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"
#include "orbel/CallScope.h"

// What a host does with a driver object, each call under the call scope a host gives it, so that
// the driver's log lines are attributed as on the controller: made under the scope of no driver
// (which binds to the driver being made), initialised under its own, given events through
// receiveEvent, and deleted (DriverPtr) after its thread has ended. Every program that hosts the
// driver does it through these.
namespace hosting::host {

// The least payload a host keeps for an event, whatever the event's size says: the driver reads
// four bytes of every analog event.
inline constexpr std::size_t kLeastPayload = 4;

// Through the factory, with copies of the records' tables.
DriverPtr<> create(const DriverConfig& records, DriverFactory factory = &CreateSiObject);

// Through the factory, with the records' own tables, so that the caller can see afterwards what
// the factory did to them.
DriverPtr<> create(DriverConfig& records, DriverFactory factory = &CreateSiObject);

// A driver that `construct` makes (a test's own subclass, say), under the same scope.
template <class Construct>
auto adopt(Construct construct) {
    using Driver = std::remove_pointer_t<std::invoke_result_t<Construct>>;
    orbel::CallScope creation(nullptr);
    return DriverPtr<Driver>(construct());
}

void initialize(CSI_base& driver);

// An event whose payload buffer holds `payload` and at least kLeastPayload bytes, the rest zero;
// `size` is what the event says of its payload.
void deliver(CSI_base& driver, uint32_t id, std::span<uint8_t> payload, uint32_t size);

// An event of the payload's own size.
void deliver(CSI_base& driver, uint32_t id, std::vector<uint8_t> payload);

// An event without a payload buffer.
void deliverNull(CSI_base& driver, uint32_t id, uint32_t size);

// Ends the driver's thread and deletes it, under its own scope; nothing when there is none.
template <class Driver>
void destroy(DriverPtr<Driver>& driver) {
    driver.reset();
}

}  // namespace hosting::host
