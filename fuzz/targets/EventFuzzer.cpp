// SPDX-License-Identifier: MIT
#include "EventFuzzer.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "Arp/System/Commons/Exceptions/Exceptions.h"
#include "hosting/DriverConfig.h"
#include "hosting/HostCalls.h"
#include "modules/IbIlConversion.h"
#include "vplc/PlatformCalls.h"

namespace fuzz {

namespace {

constexpr int kDigitalPosition = 1;
constexpr int kAnalogPosition = 2;
constexpr int kMaxSteps = 512;
constexpr uint32_t kMaxSize = 4096;

using vplc::Runtime;

stServiceParams_t service(const char* type, uint32_t id,
                          std::map<std::string, std::string> params) {
    stServiceParams_t record;
    record.nEventId = id;
    record.sName = type;
    record.sServiceType = type;
    record.mapParams = std::move(params);
    return record;
}

stServiceParams_t output(const char* type, uint32_t id, int pin) {
    return service(type, id, {{"PinNum", std::to_string(pin)}, {"InitVal", "0"}});
}

stServiceParams_t input(const char* type, uint32_t id, int pin) {
    return service(type, id, {{"PinNum", std::to_string(pin)}});
}

hosting::DriverPtr<> createDriver(const char* deviceType, int position,
                                  std::map<unsigned, stServiceParams_t> services, uint16_t size) {
    hosting::DriverConfig records(deviceType, std::to_string(position));
    records.params.sName = "fuzz";
    records.params.sServiceName = deviceType;
    for (const auto& [key, record] : services) {
        if (record.sServiceType != "RestartDevice") {
            records.mapping(record.nEventId, size);
        }
    }
    records.services = std::move(services);
    return hosting::host::create(records);
}

std::string hex(uint32_t value) {
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += digits[(value >> shift) & 0xFu];
    }
    return text;
}

}  // namespace

EventFuzzer::EventFuzzer()
    : station_(vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::AI2_AO2})) {
    Target& digital = targets_[0];
    digital.outputs = {{100, {0}}, {101, {1, 2}}, {103, {3}}, {107, {7}}};
    digital.inputs = {110, 114, 117};
    digital.restarts = {190, 191};
    digital.driver = createDriver("AXL_F_DI8_1_DO8_1", kDigitalPosition,
                                  {{1, output("DigitalOut", 100, 0)},
                                   {2, output("DigitalOut", 101, 1)},
                                   {3, output("DigitalOut", 101, 2)},
                                   {4, output("DigitalOut", 103, 3)},
                                   {5, output("DigitalOut", 107, 7)},
                                   {6, input("DigitalIn", 110, 0)},
                                   {7, input("DigitalIn", 114, 4)},
                                   {8, input("DigitalIn", 117, 7)},
                                   {9, service("RestartDevice", 190, {})},
                                   {10, service("RestartDevice", 191, {})}},
                                  1);
    // The watch knows a driver's inputs before its thread can publish them.
    watch_.expectInputs(digital.driver.get(),
                        {{110, {1, false, 0}}, {114, {1, false, 0}}, {117, {1, false, 0}}});
    hosting::host::initialize(*digital.driver);

    Target& analog = targets_[1];
    analog.analog = true;
    analog.outputs = {{200, {0}}, {201, {1}}};
    analog.inputs = {210, 211};
    analog.restarts = {290};
    watch_.analogValueHeld(0, from_ib_il(0));
    watch_.analogValueHeld(1, from_ib_il(0));
    analog.driver = createDriver("AXL_F_AI2_AO2", kAnalogPosition,
                                 {{1, output("AnalogOut", 200, 0)},
                                  {2, output("AnalogOut", 201, 1)},
                                  {3, input("AnalogIn", 210, 0)},
                                  {4, input("AnalogIn", 211, 1)},
                                  {5, service("RestartDevice", 290, {})}},
                                 4);
    watch_.expectInputs(analog.driver.get(), {{210, {4, true, 0}}, {211, {4, true, 1}}});
    hosting::host::initialize(*analog.driver);
}

EventFuzzer::~EventFuzzer() {
    for (Target& target : targets_) {
        target.driver.reset();
    }
    Runtime::setServiceLookup(Runtime::Lookup::Normal);
}

std::string EventFuzzer::run(std::span<const uint8_t> input) {
    findings_.clear();
    lookup_ = Runtime::Lookup::Normal;
    Runtime::setServiceLookup(lookup_);
    ByteReader reader(input);
    for (int step = 0; step < kMaxSteps && !reader.empty() && findings_.empty(); ++step) {
        switch (reader.byte() % 8) {
            case 5:
                station_.setDigitalInputs(kDigitalPosition, reader.byte());
                break;
            case 6: {
                const int channel = reader.byte() & 1;
                const uint16_t raw = reader.word();
                watch_.analogValueHeld(channel, from_ib_il(raw));
                station_.setAnalogInput(kAnalogPosition, channel, raw);
                break;
            }
            case 7:
                lookup_ = static_cast<Runtime::Lookup>(reader.byte() % 5);
                Runtime::setServiceLookup(lookup_);
                break;
            default:
                deliverEvent(reader);
                break;
        }
    }
    return findings_.text() + watch_.takeFindings();
}

uint32_t EventFuzzer::chooseId(const Target& target, int source, ByteReader& reader) {
    std::vector<uint32_t> ids;
    if (source == 0) {
        for (const auto& [id, pins] : target.outputs) {
            ids.push_back(id);
        }
    } else if (source == 1) {
        ids = target.inputs;
    } else if (source == 2) {
        ids = target.restarts;
    } else {
        return reader.doubleWord();
    }
    return ids[reader.byte() % ids.size()];
}

void EventFuzzer::deliverEvent(ByteReader& reader) {
    const uint8_t flags = reader.byte();
    const Target& target = targets_[flags & 1];
    const bool null = (flags & 2) != 0;
    const uint32_t id = chooseId(target, (flags >> 2) & 3, reader);
    const uint32_t size = reader.word() % (kMaxSize + 1);
    // At least the four bytes that the host keeps for every event, all of them chosen.
    std::vector<uint8_t> payload(std::max<std::size_t>(size, hosting::host::kLeastPayload));
    for (int i = 0; i < 4; ++i) {
        payload[static_cast<std::size_t>(i)] = reader.byte();
    }
    std::fill(payload.begin() + 4, payload.end(), reader.byte());

    const std::string event = (target.analog ? "analog" : "digital") + std::string(" event ") +
                              hex(id) + (null ? " (null payload)" : "") + " of size " +
                              std::to_string(size);
    const CSI_base* driver = target.driver.get();
    const PublicationWatch::Counts before = watch_.counts(driver);
    const int writes = vplc::calls("ArpPlcGds_BeginWrite");
    const int copies = vplc::calls("ArpPlcAxio_WriteFromGdsToAxio");
    const int restarts = Runtime::restarts();

    std::string thrown;
    try {
        if (null) {
            hosting::host::deliverNull(*target.driver, id, size);
        } else {
            hosting::host::deliver(*target.driver, id, payload, size);
        }
    } catch (const Arp::System::Commons::ArgumentException&) {
        thrown = "ArgumentException";
    } catch (const Arp::System::Commons::InvalidOperationException&) {
        thrown = "InvalidOperationException";
    } catch (const Arp::System::Commons::InvalidCastException&) {
        thrown = "InvalidCastException";
    } catch (const Arp::Exception& e) {
        thrown = "Arp::Exception " + e.GetMessage();
    } catch (const std::logic_error&) {
        thrown = "std::logic_error";
    } catch (const std::exception& e) {
        thrown = std::string("std::exception ") + e.what();
    } catch (...) {
        thrown = "an exception of unknown type";
    }
    const PublicationWatch::Counts after = watch_.counts(driver);

    const auto bound = target.outputs.find(id);
    const bool restart =
        std::find(target.restarts.begin(), target.restarts.end(), id) != target.restarts.end();
    int expectedWrites = 0;
    int expectedCopies = 1;
    int expectedStops = 0;
    int expectedNotices = 0;
    int expectedRestarts = 0;
    std::string expectedStop;
    std::string expectedThrow;
    if (null) {
        expectedCopies = 0;
        expectedStops = 1;
        expectedStop = "Null data pointer";
    } else if (bound != target.outputs.end()) {
        expectedWrites = static_cast<int>(bound->second.size());
        applyToModel(target, id, payload);
    } else if (restart) {
        expectedNotices = 1;
        expectedThrow = expectedException();
        expectedRestarts = expectedThrow.empty() ? 1 : 0;
        expectedCopies = expectedThrow.empty() ? 1 : 0;
    } else {
        expectedStops = 1;
        expectedStop = "Unsubscribed event received";
    }

    findings_.expect(thrown == expectedThrow,
                     event + " let out \"" + thrown + "\", not \"" + expectedThrow + "\"");
    findings_.expect(vplc::calls("ArpPlcGds_BeginWrite") - writes == expectedWrites,
                     event + " made the wrong number of writes");
    findings_.expect(vplc::calls("ArpPlcAxio_WriteFromGdsToAxio") - copies == expectedCopies,
                     event + " made the wrong number of copies to the bus");
    findings_.expect(Runtime::restarts() - restarts == expectedRestarts,
                     event + " restarted the wrong number of times");
    findings_.expect(Runtime::liveServices() == 0, event + " left a service object alive");
    findings_.expect(after.stops - before.stops == expectedStops &&
                         (expectedStops == 0 || after.lastStop == expectedStop),
                     event + " reported \"" + after.lastStop + "\"");
    findings_.expect(after.restartNotices - before.restartNotices == expectedNotices,
                     event + " logged the wrong number of restart notices");
    findings_.expect(after.failureLines == before.failureLines, event + " logged a failure");
    checkOutputs(event);
}

void EventFuzzer::applyToModel(const Target& target, uint32_t id,
                               const std::vector<uint8_t>& payload) {
    for (int pin : target.outputs.at(id)) {
        if (target.analog) {
            float value = 0.0f;
            std::memcpy(&value, payload.data(), sizeof value);
            analogOutputs_[pin] = to_ib_il(value);
            continue;
        }
        // The pin takes bit `pin` of the negated value; nothing else of the byte changes.
        const unsigned mask = 1u << pin;
        const unsigned negated = 0u - payload[0];
        digitalOutputs_ =
            static_cast<uint8_t>(digitalOutputs_ ^ ((negated ^ digitalOutputs_) & mask));
    }
}

void EventFuzzer::checkOutputs(const std::string& event) {
    const std::vector<uint8_t> digital = {digitalOutputs_};
    const std::vector<uint8_t> analog = {
        static_cast<uint8_t>(analogOutputs_[0] >> 8), static_cast<uint8_t>(analogOutputs_[0]),
        static_cast<uint8_t>(analogOutputs_[1] >> 8), static_cast<uint8_t>(analogOutputs_[1])};
    findings_.expect(station_.outputsInGds(kDigitalPosition) == digital &&
                         station_.outputsInGds(kAnalogPosition) == analog,
                     event + " left the GDS outputs other than commanded");
    findings_.expect(station_.outputsOnBus(kDigitalPosition) == digital &&
                         station_.outputsOnBus(kAnalogPosition) == analog,
                     event + " left the bus outputs other than commanded");
}

std::string EventFuzzer::expectedException() const {
    switch (lookup_) {
        case Runtime::Lookup::EmptyProviderName:
            return "ArgumentException";
        case Runtime::Lookup::NullProviderName:
            return "std::logic_error";
        case Runtime::Lookup::NoService:
            return "InvalidOperationException";
        case Runtime::Lookup::WrongType:
            return "InvalidCastException";
        default:
            return "";
    }
}

}  // namespace fuzz
