// SPDX-License-Identifier: MIT
#include "ConfigurationText.h"

#include <string_view>

namespace fuzz {

namespace {

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == 'n' || text[i + 1] == '\\')) {
            result += text[i + 1] == 'n' ? '\n' : '\\';
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

// The leading decimal digits of `text`, wrapped to 32 bits, and the rest after one separator.
uint32_t takeNumber(std::string_view& text) {
    uint32_t value = 0;
    std::size_t i = 0;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') {
        value = value * 10u + static_cast<uint32_t>(text[i] - '0');
        ++i;
    }
    text.remove_prefix(i < text.size() ? i + 1 : i);
    return value;
}

std::pair<std::string, std::string> keyAndValue(const std::string& text) {
    const std::size_t separator = text.find('=');
    if (separator == std::string::npos) {
        return {text, ""};
    }
    return {text.substr(0, separator), text.substr(separator + 1)};
}

}  // namespace

ConfigurationText ConfigurationText::parse(std::span<const uint8_t> input) {
    ConfigurationText config;
    const std::string_view all(reinterpret_cast<const char*>(input.data()), input.size());
    stServiceParams_t* lastService = nullptr;
    std::size_t start = 0;
    while (start < all.size()) {
        std::size_t end = all.find('\n', start);
        if (end == std::string_view::npos) {
            end = all.size();
        }
        std::string_view line = all.substr(start, end - start);
        start = end + 1;
        if (line.empty()) {
            continue;
        }
        const char tag = line.front();
        line.remove_prefix(1);
        switch (tag) {
            case 'T':
                config.params.sDeviceType = unescaped(line);
                break;
            case 'N':
                config.params.sServiceName = unescaped(line);
                break;
            case 'X':
                config.params.sName = unescaped(line);
                break;
            case 'P': {
                auto [key, value] = keyAndValue(unescaped(line));
                config.params.mapParams[key] = value;
                break;
            }
            case 'M': {
                const uint32_t id = takeNumber(line);
                const uint32_t size = takeNumber(line);
                if (config.mappings.size() < kMaxMappings || config.mappings.count(id) != 0) {
                    config.mappings[id].nDataSize = static_cast<uint16_t>(size & 0xFFFFu);
                }
                break;
            }
            case 'S': {
                const uint32_t key = takeNumber(line);
                const uint32_t id = takeNumber(line);
                if (config.services.size() >= kMaxServices && config.services.count(key) == 0) {
                    lastService = nullptr;
                    break;
                }
                stServiceParams_t service;
                service.nEventId = id;
                service.sName = "service " + std::to_string(key);
                service.sServiceType = unescaped(line);
                lastService = &(config.services[key] = service);
                break;
            }
            case 'K':
                if (lastService != nullptr) {
                    auto [key, value] = keyAndValue(unescaped(line));
                    lastService->mapParams[key] = value;
                }
                break;
            case 'F': {
                const char* call = kFaultableCalls[takeNumber(line) % kFaultableCalls.size()];
                const int count = static_cast<int>(takeNumber(line) % 3) + 1;
                std::erase_if(config.faults,
                              [call](const Fault& fault) { return fault.call == call; });
                config.faults.push_back({call, count});
                break;
            }
            case 'B':
                config.bus.clear();
                for (char letter : line) {
                    if (config.bus.size() < kMaxModules && (letter == 'D' || letter == 'A')) {
                        config.bus.push_back(letter == 'D' ? vplc::Module::DI8_DO8
                                                           : vplc::Module::AI2_AO2);
                    }
                }
                break;
            default:
                break;
        }
    }
    if (config.bus.empty()) {
        config.bus = {vplc::Module::DI8_DO8, vplc::Module::AI2_AO2};
    }
    return config;
}

}  // namespace fuzz
