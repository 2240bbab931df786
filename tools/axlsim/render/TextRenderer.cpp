// SPDX-License-Identifier: MIT
#include "axlsim/render/TextRenderer.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "axlsim/base/Hex.h"
#include "axlsim/base/Overloaded.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/PlcOperationName.h"
#include "axlsim/run/ProcessData.h"
#include "modules/IbIlConversion.h"

namespace axlsim {

namespace {

constexpr int kTimeWidth = 9;
constexpr int kWhatWidth = 9;

std::string padded(const std::string& text, int width, bool right) {
    const auto size = static_cast<int>(text.size());
    if (size >= width) {
        return text;
    }
    const std::string fill(static_cast<std::size_t>(width - size), ' ');
    return right ? fill + text : text + fill;
}

// Milliseconds with one decimal, so that the times of a run on the wall clock line up too.
std::string timeText(std::chrono::nanoseconds t) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", static_cast<double>(t.count()) / 1e6);
    return text;
}

std::string byteCount(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string analogValue(uint16_t raw) {
    return "raw " + std::to_string(raw) + " (" + floatText(from_ib_il(raw)) + ")";
}

std::string pinsOn(uint8_t byte) {
    std::string pins;
    for (int pin = 0; pin < 8; ++pin) {
        if (((byte >> pin) & 1) != 0) {
            pins += (pins.empty() ? "" : " ") + std::to_string(pin);
        }
    }
    return pins.empty() ? "all off" : "on: " + pins;
}

}  // namespace

TextRenderer::TextRenderer(std::ostream& out, const Config& config, bool colour)
    : out_(out), config_(config), catalog_(config.drivers), colour_(colour) {}

std::string TextRenderer::paint(Tone tone, const std::string& text) const {
    // The terminal's colour code of each tone, in the order of Tone: Plain, Quiet (dim), Good
    // (green), Bus (cyan), Step (yellow), Bad (bold red), Special (magenta).
    static constexpr std::array<const char*, 7> kCodes{
        "", "\033[2m", "\033[32m", "\033[36m", "\033[33m", "\033[1;31m", "\033[35m"};
    static_assert(kCodes.size() == static_cast<std::size_t>(Tone::Special) + 1);
    if (!colour_ || tone == Tone::Plain) {
        return text;
    }
    return kCodes[static_cast<std::size_t>(tone)] + text + "\033[0m";
}

void TextRenderer::header(bool realTime) {
    std::string bus;
    for (std::size_t i = 0; i < config_.bus.size(); ++i) {
        bus += (i == 0 ? "" : ", ") + std::to_string(i + 1) + ": " +
               std::string(vplc::orderName(config_.bus[i]));
    }
    out_ << paint(Tone::Plain, visible(config_.file)) << ": " << config_.drivers.size()
         << (config_.drivers.size() == 1 ? " driver" : " drivers") << ", bus [" << bus << "], "
         << (realTime ? "wall clock" : "virtual clock") << "\n";
    if (!config_.description.empty()) {
        out_ << paint(Tone::Quiet, visible(config_.description)) << "\n";
    }
    out_ << "\n";
}

void TextRenderer::line(const Happening& happening, const std::string& what, Tone tone,
                        const std::string& details) {
    std::string prefix = padded(timeText(happening.t), kTimeWidth, true) + " ms  ";
    if (config_.severalDrivers) {
        prefix += happening.driver < 0 ? "    " : "[" + std::to_string(happening.driver) + "] ";
    }
    const std::string shown = visible(details);
    out_ << paint(Tone::Quiet, prefix) << paint(tone, padded(what, kWhatWidth, false)) << ' '
         << (tone == Tone::Bad || tone == Tone::Quiet ? paint(tone, shown) : shown) << '\n';
}

void TextRenderer::continuation(const std::string& details) {
    const std::size_t indent = kTimeWidth + 5 + (config_.severalDrivers ? 4 : 0) + kWhatWidth + 1;
    out_ << std::string(indent, ' ') << visible(details) << '\n';
}

std::string TextRenderer::describe(const Happening::Publish& publish, int driver) const {
    std::string text = "event " + std::to_string(publish.id);
    const Config::Service* service = catalog_.inputService(driver < 0 ? 0 : driver, publish.id);
    if (service != nullptr && !service->name.empty()) {
        text += " " + inQuotes(service->name);
    }
    const auto value = catalog_.publishedValue(driver < 0 ? 0 : driver, publish.id, publish.bytes);
    if (value) {
        if (const auto* byte = std::get_if<uint8_t>(&*value)) {
            return text + " = " + std::to_string(*byte) +
                   (*byte == 0   ? " (off)"
                    : *byte == 1 ? " (on)"
                                 : "");
        }
        return text + " = " + floatText(std::get<float>(*value));
    }
    if (publish.bytes.empty()) {
        return text + " with no payload (size " + std::to_string(publish.size) + ")";
    }
    return text + ": " + toHex(publish.bytes) + " (" + byteCount(publish.bytes.size()) + ")";
}

std::string TextRenderer::describe(const Happening::Event& event, int driver) const {
    std::string text = "host sends event " + std::to_string(event.id);
    if (!event.payload) {
        return text + " with no data (null pData, size " + std::to_string(event.size) + ")";
    }
    text += ": " + toHex(*event.payload);
    if (catalog_.feedsAnalogOutput(driver, event.id) && event.payload->size() >= sizeof(float)) {
        float value = 0.0f;
        std::memcpy(&value, event.payload->data(), sizeof value);
        text += " = " + floatText(value);
    }
    return text + " (size " + std::to_string(event.size) + ")";
}

std::string TextRenderer::describe(const Happening::Routed& routed, int driver) const {
    const std::string text =
        "route " + std::to_string(routed.from) + " -> " + std::to_string(routed.to) + ": ";
    // An analog output's payload is a native float: its value says more than its bytes.
    if (catalog_.feedsAnalogOutput(driver, routed.to) && routed.bytes.size() >= sizeof(float)) {
        float value = 0.0f;
        std::memcpy(&value, routed.bytes.data(), sizeof value);
        return text + floatText(value);
    }
    return text + toHex(routed.bytes);
}

std::string TextRenderer::describe(const Happening::Input& input) const {
    const std::string module = "module " + std::to_string(input.position);
    if (config_.bus[static_cast<std::size_t>(input.position - 1)] == vplc::Module::DI8_DO8) {
        return module + " input pin " + std::to_string(input.pin) + " -> " +
               std::to_string(input.value);
    }
    return module + " input channel " + std::to_string(input.pin) + " -> " +
           analogValue(input.value);
}

std::string TextRenderer::describe(const Happening::PlantMove& move) const {
    const std::string value =
        move.to.digital() ? std::to_string(move.value) : analogValue(move.value);
    const std::string cause =
        move.from ? move.model + " from " + move.from->name() : move.shape + " " + move.model;
    return move.to.name() + " -> " + value + " (" + cause + ")";
}

std::string TextRenderer::moduleOutputs(int position, const std::vector<uint8_t>& data) const {
    const std::string module = "module " + std::to_string(position);
    if (config_.bus[static_cast<std::size_t>(position - 1)] == vplc::Module::DI8_DO8) {
        const uint8_t byte = data.empty() ? 0 : data[0];
        return module + " DO " + bitsText(byte) + " (" + pinsOn(byte) + ")";
    }
    return module + " AO0 " + analogValue(analogWord(data, 0)) + ", AO1 " +
           analogValue(analogWord(data, 1));
}

std::string TextRenderer::describeOutputs(const std::vector<std::vector<uint8_t>>& outputs,
                                          bool onlyChanged) const {
    std::string text;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        if (onlyChanged && i < lastOutputs_.size() && lastOutputs_[i] == outputs[i]) {
            continue;
        }
        text += (text.empty() ? "" : " | ") + moduleOutputs(static_cast<int>(i + 1), outputs[i]);
    }
    return text.empty() ? "outputs unchanged" : text;
}

void TextRenderer::happening(const Happening& happening) {
    const int driver = happening.driver;
    std::visit(
        Overloaded{
            [&](const Happening::Log& log) {
                line(happening, "log L" + std::to_string(log.level),
                     log.level <= 2 ? Tone::Bad : Tone::Plain, log.text);
            },
            [&](const Happening::Publish& publish) {
                line(happening, "publish", Tone::Good, describe(publish, driver));
            },
            [&](const Happening::Stop& stop) {
                line(happening, "STOPPED", Tone::Bad,
                     inQuotes(stop.message) +
                         (stop.eventId ? " (service of event " + std::to_string(*stop.eventId) + ")"
                                       : " (driver-wide)"));
            },
            [&](const Happening::BusWrite& write) {
                line(happening, "bus", Tone::Bus,
                     "outputs to the bus: " + describeOutputs(write.outputs, true));
                lastOutputs_ = write.outputs;
            },
            [&](const Happening::Restart&) {
                line(happening, "restart", Tone::Special, "the controller restarts");
            },
            [&](const Happening::Exception& exception) {
                line(happening, "EXCEPTION", Tone::Bad,
                     exception.type + " " + inQuotes(exception.what) + " left the driver's " +
                         exception.where + (exception.where == "event" ? " delivery" : ""));
            },
            [&](const Happening::Input& input) {
                line(happening, "input", Tone::Step, describe(input));
            },
            [&](const Happening::Event& event) {
                line(happening, "event", Tone::Step, describe(event, driver < 0 ? 0 : driver));
            },
            [&](const Happening::Plc& plc) {
                line(happening, "plc", Tone::Step,
                     "the runtime reports the PLC operation " + plcOperationName(plc.operation) +
                         " (" + std::to_string(plc.operation) + ")");
            },
            [&](const Happening::Note& note) { line(happening, "#", Tone::Quiet, note.text); },
            [&](const Happening::PlantMove& move) {
                if (move.shown) {
                    line(happening, "plant", Tone::Step, describe(move));
                }
            },
            [&](const Happening::Routed& routed) {
                line(happening, "host", Tone::Step, describe(routed, driver < 0 ? 0 : driver));
            },
        },
        happening.what);
}

void TextRenderer::finish(const RunResult& result) {
    Happening end{result.end, -1, Happening::Note{}};
    for (std::size_t i = 0; i < result.drivers.size(); ++i) {
        const RunResult::DriverState& driver = result.drivers[i];
        end.driver = static_cast<int>(i);
        std::string state = !driver.created  ? "was never created"
                            : driver.stopped ? "stopped with an error"
                                             : "ran without a stop";
        if (driver.threw) {
            state += ", an exception left it";
        }
        line(end, "end", driver.stopped || driver.threw || !driver.created ? Tone::Bad : Tone::Good,
             "the driver " + state + "; " + std::to_string(driver.publishes) +
                 (driver.publishes == 1 ? " publication" : " publications"));
    }
    continuation("bus: " + describeOutputs(result.busOutputs, false));
    if (result.gdsOutputs != result.busOutputs) {
        continuation("GDS, not yet on the bus: " + describeOutputs(result.gdsOutputs, false));
    }
    continuation(std::to_string(result.restarts) +
                 (result.restarts == 1 ? " restart" : " restarts") + " of the controller");
    if (config_.expectStop && !result.wentAsExpected && !result.interrupted) {
        out_ << paint(Tone::Bad,
                      "expected a stop (\"expect_stop\": true), but no driver stopped and no "
                      "exception left one")
             << '\n';
    }
    out_.flush();
}

void TextRenderer::interrupted(std::chrono::nanoseconds at, const std::string& signal) {
    out_ << paint(Tone::Bad, "interrupted by " + signal + " at " + timeText(at) +
                                 " ms: the timeline above is the run so far")
         << '\n';
    out_.flush();
}

}  // namespace axlsim
