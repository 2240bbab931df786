// SPDX-License-Identifier: MIT
// Concurrency soak: output events for many pins of three drivers, delivered from one host thread
// per driver as fast as they go, while the drivers scan on the wall clock and their inputs
// change under them. The events go on until both the event count and the minimum time are
// reached, so that they meet many scans. Afterwards it checks that
//   - the bus holds the last commanded value of every output pin (no output lost),
//   - every published analog value is one the input actually held (no torn words),
//   - every input value that lasted over a whole scan was published,
// and reports the events per second. Exit status 0 when every check holds.
//
//   axl_soak [--events N] [--min-seconds S] [--seed N]   (defaults: 1000000, 3, 1)

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "InputChanger.h"
#include "SoakObserver.h"
#include "WallClock.h"
#include "hosting/DriverConfig.h"
#include "hosting/DriverPtr.h"
#include "hosting/HostCalls.h"
#include "modules/IbIlConversion.h"
#include "orbel/DriverThreads.h"
#include "vplc/Station.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

struct Options {
    long events = 1000000;
    double minSeconds = 3.0;
    uint32_t seed = 1;
};

bool parse(int argc, char** argv, Options& options) {
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--events") {
            options.events = std::stol(argv[i + 1]);
        } else if (name == "--min-seconds") {
            options.minSeconds = std::stod(argv[i + 1]);
        } else if (name == "--seed") {
            options.seed = static_cast<uint32_t>(std::stoul(argv[i + 1]));
        } else {
            return false;
        }
    }
    return argc % 2 == 1 && options.events > 0;
}

// One driver of the soak: its module's position, its output pins (event id = base + pin) and
// its inputs (event id = base + 10 + pin).
struct SoakDriver {
    const char* deviceType;
    int position;
    uint32_t eventBase;
    int outputs;
    int inputs;
    hosting::DriverPtr<> driver;
    std::vector<uint16_t> lastCommanded;  // per output: 0 or 1, or the analog word

    bool analog() const { return std::strcmp(deviceType, "AXL_F_AI2_AO2") == 0; }
    uint32_t outputId(int pin) const { return eventBase + static_cast<uint32_t>(pin); }
    uint32_t inputId(int pin) const { return eventBase + 10 + static_cast<uint32_t>(pin); }
};

void start(SoakDriver& soak) {
    hosting::DriverConfig records(soak.deviceType, std::to_string(soak.position));
    records.params.sName = "soak";
    records.params.sServiceName = "soak " + std::to_string(soak.position);
    const char* out = soak.analog() ? "AnalogOut" : "DigitalOut";
    const char* in = soak.analog() ? "AnalogIn" : "DigitalIn";
    const uint16_t size = soak.analog() ? 4 : 1;
    const auto add = [&](const char* type, uint32_t id, int pin, bool output) {
        stServiceParams_t service;
        service.nEventId = id;
        service.sName = type + std::to_string(pin);
        service.sServiceType = type;
        service.mapParams.emplace("PinNum", std::to_string(pin));
        if (output) {
            service.mapParams.emplace("InitVal", "0");
        }
        records.services[id] = service;
        records.mapping(id, size);
    };
    for (int pin = 0; pin < soak.outputs; ++pin) {
        add(out, soak.outputId(pin), pin, true);
    }
    for (int pin = 0; pin < soak.inputs; ++pin) {
        add(in, soak.inputId(pin), pin, false);
    }
    soak.lastCommanded.assign(static_cast<std::size_t>(soak.outputs), 0);
    soak.driver = hosting::host::create(records);
    hosting::host::initialize(*soak.driver);
}

// The host's event thread for one driver: output events to random pins, at least `count` of them
// and until `until`. Returns how many it delivered.
long commandOutputs(SoakDriver& soak, long count, Clock::time_point until, uint32_t seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> pins(0, soak.outputs - 1);
    std::uniform_int_distribution<unsigned> words(0, 65535);
    std::array<uint8_t, hosting::host::kLeastPayload> payload{};
    long delivered = 0;
    // The clock is read only now and then: it costs more than an event.
    while (delivered < count || delivered % 1024 != 0 || Clock::now() < until) {
        ++delivered;
        const int pin = pins(random);
        uint32_t size = 1;
        if (soak.analog()) {
            const float value = from_ib_il(static_cast<uint16_t>(words(random)));
            std::memcpy(payload.data(), &value, sizeof value);
            size = sizeof value;
            soak.lastCommanded[static_cast<std::size_t>(pin)] = to_ib_il(value);
        } else {
            payload[0] = static_cast<uint8_t>(random() & 1u);
            soak.lastCommanded[static_cast<std::size_t>(pin)] = payload[0];
        }
        hosting::host::deliver(*soak.driver, soak.outputId(pin), payload, size);
    }
    return delivered;
}

int lostOutputs(const SoakDriver& soak, const vplc::Station& station) {
    int lost = 0;
    for (int pin = 0; pin < soak.outputs; ++pin) {
        const uint16_t commanded = soak.lastCommanded[static_cast<std::size_t>(pin)];
        const uint16_t onBus =
            soak.analog()
                ? station.analogOutputOnBus(soak.position, pin)
                : static_cast<uint16_t>((station.digitalOutputsOnBus(soak.position) >> pin) & 1u);
        if (onBus != commanded) {
            std::printf("  lost: position %d pin %d commanded %u, bus %u\n", soak.position, pin,
                        commanded, onBus);
            ++lost;
        }
    }
    return lost;
}

struct Scan {
    Clock::time_point began;
    Clock::time_point ended;
};

// The steady scans of a driver: from the end of each 100 ms pause to the start of the next.
std::vector<Scan> steadyScans(const soak::WallClock& clock, const CSI_base* driver) {
    std::vector<Scan> scans;
    const auto pauses = clock.pausesOf(driver);
    for (std::size_t i = 0; i + 1 < pauses.size(); ++i) {
        if (pauses[i].requested == 100ms) {
            scans.push_back({pauses[i].ended, pauses[i + 1].began});
        }
    }
    return scans;
}

float floatOf(const std::vector<uint8_t>& payload) {
    float value = 0.0f;
    std::memcpy(&value, payload.data(), std::min(payload.size(), sizeof value));
    return value;
}

struct InputFigures {
    int analogPublications = 0;
    int tornOrNeverHeld = 0;
    int holdsOverAScan = 0;
    int unpublished = 0;
};

InputFigures checkInputs(const soak::InputChanger& changer, const soak::WallClock& clock,
                         const std::vector<soak::SoakObserver::Publication>& publications) {
    InputFigures figures;
    std::map<const CSI_base*, std::vector<Scan>> scans;
    std::vector<std::set<uint16_t>> held(changer.inputs().size());
    for (const auto& hold : changer.holds()) {
        held[hold.input].insert(hold.value);
    }

    for (const auto& publication : publications) {
        for (std::size_t i = 0; i < changer.inputs().size(); ++i) {
            const auto& input = changer.inputs()[i];
            if (!input.analog || input.driver != publication.driver ||
                input.eventId != publication.id) {
                continue;
            }
            ++figures.analogPublications;
            const float value = floatOf(publication.payload);
            const bool wasHeld = std::any_of(held[i].begin(), held[i].end(), [&](uint16_t word) {
                return from_ib_il(word) == value;
            });
            if (!wasHeld) {
                std::printf("  torn or never held: event %u published %.6f\n", publication.id,
                            static_cast<double>(value));
                ++figures.tornOrNeverHeld;
            }
        }
    }

    for (const auto& hold : changer.holds()) {
        const auto& input = changer.inputs()[hold.input];
        auto& driverScans = scans[input.driver];
        if (driverScans.empty()) {
            driverScans = steadyScans(clock, input.driver);
        }
        const auto scan = std::find_if(driverScans.begin(), driverScans.end(), [&](const Scan& s) {
            return s.began >= hold.began && s.ended <= hold.ended;
        });
        if (scan == driverScans.end()) {
            continue;
        }
        ++figures.holdsOverAScan;
        const soak::SoakObserver::Publication* last = nullptr;
        for (const auto& publication : publications) {
            if (publication.driver == input.driver && publication.id == input.eventId &&
                publication.time <= scan->ended) {
                last = &publication;
            }
        }
        const bool published =
            last != nullptr && (input.analog ? floatOf(last->payload) == from_ib_il(hold.value)
                                             : last->payload.at(0) == hold.value);
        if (!published) {
            std::printf("  unpublished: event %u value %u held over a whole scan\n", input.eventId,
                        hold.value);
            ++figures.unpublished;
        }
    }
    return figures;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--events N] [--min-seconds S] [--seed N]\n", argv[0]);
        return 2;
    }

    soak::SoakObserver observer;
    soak::WallClock clock;
    vplc::Station station =
        vplc::Station::of({vplc::Module::DI8_DO8, vplc::Module::DI8_DO8, vplc::Module::AI2_AO2});
    SoakDriver drivers[] = {
        {"AXL_F_DI8_1_DO8_1", 1, 100, 8, 4, {}, {}},
        {"AXL_F_DI8_1_DO8_1", 2, 200, 8, 4, {}, {}},
        {"AXL_F_AI2_AO2", 3, 300, 2, 2, {}, {}},
    };
    std::vector<soak::InputChanger::Input> inputs;
    for (SoakDriver& soak : drivers) {
        start(soak);
        for (int pin = 0; pin < soak.inputs; ++pin) {
            inputs.push_back(
                {soak.driver.get(), soak.inputId(pin), soak.position, pin, soak.analog()});
        }
    }

    soak::InputChanger changer(station, inputs, options.seed);
    const auto begin = Clock::now();
    const auto until = begin + std::chrono::duration_cast<Clock::duration>(
                                   std::chrono::duration<double>(options.minSeconds));
    changer.start();
    std::vector<std::thread> hosts;
    long delivered[3] = {};
    const long perDriver = options.events / 3;
    for (std::size_t i = 0; i < 3; ++i) {
        const long count = i == 0 ? options.events - 2 * perDriver : perDriver;
        hosts.emplace_back([&, i, count] {
            delivered[i] = commandOutputs(drivers[i], count, until,
                                          options.seed + static_cast<uint32_t>(i) + 1);
        });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    const auto eventsDone = Clock::now();
    changer.stop();
    const long events = delivered[0] + delivered[1] + delivered[2];

    int lost = 0;
    int outputs = 0;
    for (const SoakDriver& soak : drivers) {
        lost += lostOutputs(soak, station);
        outputs += soak.outputs;
    }
    int scans = 0;
    for (SoakDriver& soak : drivers) {
        // Ending the thread ends its last pause, so every scan is counted once it has ended.
        orbel::endDriverThread(*soak.driver);
        scans += static_cast<int>(steadyScans(clock, soak.driver.get()).size());
    }
    const auto publications = observer.publications();
    const InputFigures figures = checkInputs(changer, clock, publications);
    for (SoakDriver& soak : drivers) {
        soak.driver.reset();
    }
    const double seconds = std::chrono::duration<double>(eventsDone - begin).count();
    const auto failureLines = observer.failureLines();
    const auto stops = observer.stops().size();

    std::printf("soak: %ld output events to 3 drivers (%d output pins) in %.2f s: %.0f events/s\n",
                events, outputs, seconds, static_cast<double>(events) / seconds);
    std::printf("  outputs lost: %d (bus against the last commanded value of every pin)\n", lost);
    std::printf("  input values held: %zu, of which over a whole scan: %d, unpublished: %d\n",
                changer.holds().size(), figures.holdsOverAScan, figures.unpublished);
    std::printf("  analog publications: %d, torn or never held: %d\n", figures.analogPublications,
                figures.tornOrNeverHeld);
    std::printf("  scans: %d, publications: %zu, failure lines: %d, stops: %zu\n", scans,
                publications.size(), failureLines, stops);

    const bool passed = lost == 0 && figures.unpublished == 0 && figures.tornOrNeverHeld == 0 &&
                        figures.holdsOverAScan > 0 && failureLines == 0 && stops == 0;
    std::printf("%s\n", passed ? "PASS" : "FAIL");
    return passed ? 0 : 1;
}
