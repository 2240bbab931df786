// SPDX-License-Identifier: MIT
#include "axlsim/render/VcdWriter.h"

#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "axlsim/base/Overloaded.h"
#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/EventCatalog.h"
#include "axlsim/run/ProcessData.h"

namespace axlsim {

namespace {

constexpr int kDigitalPins = 8;
constexpr int kAnalogChannels = 2;
constexpr int kWordBits = 16;

// The short identifier of the n-th variable, from the printable characters.
std::string codeOf(std::size_t n) {
    constexpr std::size_t kFirst = 33;
    constexpr std::size_t kCount = 94;
    std::string code;
    do {
        code += static_cast<char>(kFirst + n % kCount);
        n /= kCount;
    } while (n > 0);
    return code;
}

// A text for the header: "$" could end a section early, and a control character a line.
std::string headerText(std::string_view text) {
    std::string shown;
    for (const char c : visible(text)) {
        if (c == '$') {
            shown += "\\x24";
        } else {
            shown += c;
        }
    }
    return shown;
}

// A scope or variable name: one word of letters, digits and underscores.
std::string identifier(std::string_view name) {
    std::string word;
    for (const char c : name) {
        word += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    }
    return word;
}

std::string binary(uint64_t value, int width) {
    std::string bits;
    for (int bit = width - 1; bit >= 0; --bit) {
        bits += ((value >> bit) & 1U) != 0 ? '1' : '0';
    }
    return bits;
}

struct Variable {
    std::string type;  // "wire", "real" or "event"
    int width = 1;
    std::string name;
    std::string code;
    std::string key;
};

struct Scope {
    std::string name;
    bool bus = false;
    std::vector<Variable> variables;
};

}  // namespace

class VcdWriter::Dump {
public:
    Dump(std::ostream& out, const Config& config)
        : out_(out), config_(config), catalog_(config.drivers) {
        declareBus();
        declareEvents();
    }

    void header() {
        out_ << "$comment axlsim: " << headerText(config_.file) << " $end\n";
        out_ << "$version axlsim $end\n";
        out_ << "$timescale 1us $end\n";
        out_ << "$scope module axlsim $end\n";
        for (const Scope& scope : scopes_) {
            out_ << "$scope module " << identifier(scope.name) << " $end\n";
            for (const Variable& variable : scope.variables) {
                out_ << "$var " << variable.type << ' ' << variable.width << ' ' << variable.code
                     << ' ' << identifier(variable.name) << " $end\n";
            }
            out_ << "$upscope $end\n";
        }
        out_ << "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n";
        // The bus starts all off; a published event is unknown until its first publication.
        for (std::size_t position = 1; position <= config_.bus.size(); ++position) {
            setInputs(static_cast<int>(position), {});
            setOutputs(static_cast<int>(position), {});
        }
        for (const Scope& scope : scopes_) {
            for (const Variable& variable : scope.variables) {
                if (scope.bus || variable.type == "event") {
                    continue;
                }
                set(variable.key, variable.type == "real" ? "r0"
                                  : variable.width == 1   ? "x"
                                                          : "bx");
            }
        }
        out_ << "$end\n";
    }

    void change(const Happening& happening) {
        std::visit(Overloaded{
                       [&](const Happening::Input& input) {
                           stamp(happening.t);
                           const bool digital =
                               config_.bus[static_cast<std::size_t>(input.position - 1)] ==
                               vplc::Module::DI8_DO8;
                           if (digital) {
                               set(key(input.position, "in" + std::to_string(input.pin)),
                                   input.value != 0 ? "1" : "0");
                           } else {
                               set(key(input.position, "ai" + std::to_string(input.pin)),
                                   "b" + binary(input.value, kWordBits));
                           }
                       },
                       [&](const Happening::PlantMove& move) {
                           stamp(happening.t);
                           const std::string pin = std::to_string(move.to.index);
                           if (move.to.digital()) {
                               set(key(move.to.position, "in" + pin), move.value != 0 ? "1" : "0");
                           } else {
                               set(key(move.to.position, "ai" + pin),
                                   "b" + binary(move.value, kWordBits));
                           }
                       },
                       [&](const Happening::BusWrite& write) {
                           stamp(happening.t);
                           for (std::size_t i = 0; i < write.outputs.size(); ++i) {
                               setOutputs(static_cast<int>(i + 1), write.outputs[i]);
                           }
                       },
                       [&](const Happening::Publish& publication) {
                           stamp(happening.t);
                           publish(happening.driver, publication);
                       },
                       [](const auto&) {},
                   },
                   happening.what);
    }

    void stamp(std::chrono::nanoseconds t) {
        const int64_t us = std::chrono::duration_cast<std::chrono::microseconds>(t).count();
        if (us != now_) {
            out_ << '#' << us << '\n';
            now_ = us;
        }
    }

private:
    std::string key(int position, const std::string& pin) const {
        return "m" + std::to_string(position) + "." + pin;
    }

    const Variable& add(Scope& scope, const std::string& type, int width, const std::string& name,
                        const std::string& key) {
        scope.variables.push_back(Variable{type, width, name, codeOf(count_++), key});
        codes_[key] = scope.variables.back().code;
        return scope.variables.back();
    }

    void declareBus() {
        for (std::size_t i = 0; i < config_.bus.size(); ++i) {
            const int position = static_cast<int>(i + 1);
            Scope scope{
                "m" + std::to_string(position) + "_" + std::string(vplc::orderName(config_.bus[i])),
                true,
                {}};
            if (config_.bus[i] == vplc::Module::DI8_DO8) {
                for (int pin = 0; pin < kDigitalPins; ++pin) {
                    add(scope, "wire", 1, "in" + std::to_string(pin),
                        key(position, "in" + std::to_string(pin)));
                }
                for (int pin = 0; pin < kDigitalPins; ++pin) {
                    add(scope, "wire", 1, "out" + std::to_string(pin),
                        key(position, "out" + std::to_string(pin)));
                }
            } else {
                for (int channel = 0; channel < kAnalogChannels; ++channel) {
                    add(scope, "wire", kWordBits, "ai" + std::to_string(channel),
                        key(position, "ai" + std::to_string(channel)));
                }
                for (int channel = 0; channel < kAnalogChannels; ++channel) {
                    add(scope, "wire", kWordBits, "ao" + std::to_string(channel),
                        key(position, "ao" + std::to_string(channel)));
                }
            }
            scopes_.push_back(std::move(scope));
        }
    }

    void declareEvents() {
        for (std::size_t d = 0; d < config_.drivers.size(); ++d) {
            Scope scope{
                config_.severalDrivers ? "driver" + std::to_string(d) : "events", false, {}};
            for (const EventCatalog::Published& published :
                 catalog_.published(static_cast<int>(d))) {
                const std::string name = "ev" + std::to_string(published.id);
                const std::string eventKey = "d" + std::to_string(d) + "." + name;
                if (published.payload == EventCatalog::Payload::Digital) {
                    add(scope, "wire", 1, name, eventKey);
                } else if (published.payload == EventCatalog::Payload::Analog) {
                    add(scope, "real", 64, name, eventKey);
                } else if (published.size == 0) {
                    add(scope, "event", 1, name, eventKey);
                } else {
                    add(scope, "wire", static_cast<int>(published.size) * 8, name, eventKey);
                }
                kinds_[eventKey] = published;
            }
            if (!scope.variables.empty()) {
                scopes_.push_back(std::move(scope));
            }
        }
    }

    // Writes a value if it differs from the variable's last one.
    void set(const std::string& key, const std::string& value) {
        const auto code = codes_.find(key);
        if (code == codes_.end() || values_[key] == value) {
            return;
        }
        values_[key] = value;
        out_ << value << (value.front() == 'b' || value.front() == 'r' ? " " : "") << code->second
             << '\n';
    }

    void setPins(int position, const char* digital, const char* analog,
                 const std::vector<uint8_t>& data) {
        if (config_.bus[static_cast<std::size_t>(position - 1)] == vplc::Module::DI8_DO8) {
            for (int pin = 0; pin < kDigitalPins; ++pin) {
                set(key(position, digital + std::to_string(pin)),
                    digitalPin(data, pin) ? "1" : "0");
            }
        } else {
            for (int channel = 0; channel < kAnalogChannels; ++channel) {
                set(key(position, analog + std::to_string(channel)),
                    "b" + binary(analogWord(data, channel), kWordBits));
            }
        }
    }

    void setInputs(int position, const std::vector<uint8_t>& data) {
        setPins(position, "in", "ai", data);
    }

    void setOutputs(int position, const std::vector<uint8_t>& data) {
        setPins(position, "out", "ao", data);
    }

    void publish(int driver, const Happening::Publish& publish) {
        const std::string eventKey =
            "d" + std::to_string(driver < 0 ? 0 : driver) + ".ev" + std::to_string(publish.id);
        const auto kind = kinds_.find(eventKey);
        if (kind == kinds_.end()) {
            return;
        }
        const EventCatalog::Published& published = kind->second;
        if (published.payload == EventCatalog::Payload::Digital && !publish.bytes.empty()) {
            set(eventKey, publish.bytes[0] != 0 ? "1" : "0");
        } else if (published.payload == EventCatalog::Payload::Analog &&
                   publish.bytes.size() >= sizeof(float)) {
            float value = 0.0f;
            std::memcpy(&value, publish.bytes.data(), sizeof value);
            set(eventKey, "r" + floatText(value));
        } else if (published.size == 0) {
            out_ << '1' << codes_[eventKey] << '\n';
        } else {
            std::string bits;
            for (uint8_t byte : publish.bytes) {
                bits += binary(byte, 8);
            }
            set(eventKey, "b" + bits);
        }
    }

    std::ostream& out_;
    const Config& config_;
    EventCatalog catalog_;
    std::vector<Scope> scopes_;
    std::size_t count_ = 0;
    std::map<std::string, std::string> codes_;
    std::map<std::string, std::string> values_;
    std::map<std::string, EventCatalog::Published> kinds_;
    int64_t now_ = 0;
};

VcdWriter::VcdWriter(std::ostream& out, const Config& config)
    : dump_(std::make_unique<Dump>(out, config)) {
    dump_->header();
}

VcdWriter::~VcdWriter() = default;

void VcdWriter::change(const Happening& happening) {
    dump_->change(happening);
}

void VcdWriter::finish(std::chrono::nanoseconds end) {
    dump_->stamp(end);
}

void writeVcd(std::ostream& out, const Config& config, const RunResult& result) {
    VcdWriter writer(out, config);
    for (const Happening& happening : result.timeline) {
        writer.change(happening);
    }
    writer.finish(result.end);
}

}  // namespace axlsim
