// SPDX-License-Identifier: MIT
#include "axlsim/serve/ListenAddress.h"

#include <algorithm>
#include <charconv>

#include "axlsim/base/ValueText.h"

namespace axlsim {

namespace {

constexpr int kHighestPort = 65535;

bool decimalDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::string portProblem(std::string_view text) {
    const std::string accepted = "expected decimal digits from 0 to 65535";
    if (!decimalDigits(text)) {
        return (text.empty() ? std::string("an empty text") : visible(text)) +
               " is not a port: " + accepted;
    }
    int port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc() || end != text.data() + text.size() || port > kHighestPort) {
        return std::string(text) + " is beyond the highest port: " + accepted;
    }
    return "";
}

int portNumber(std::string_view text) {
    int port = 0;
    std::from_chars(text.data(), text.data() + text.size(), port);
    return port;
}

std::optional<std::string> hostOf(std::string_view text) {
    if (text.size() >= 2 && text.front() == '[' && text.back() == ']') {
        text = text.substr(1, text.size() - 2);
    }
    if (text.empty() || text.find_first_of("[]") != std::string_view::npos) {
        return std::nullopt;
    }
    return std::string(text);
}

std::optional<ListenAddress> listenAddressOf(std::string_view text,
                                             const std::string& defaultHost) {
    ListenAddress address{defaultHost, 0};
    std::string_view port = text;
    if (const auto colon = text.rfind(':'); colon != std::string_view::npos) {
        const auto host = hostOf(text.substr(0, colon));
        if (!host) {
            return std::nullopt;
        }
        address.host = *host;
        port = text.substr(colon + 1);
    }
    if (!portProblem(port).empty()) {
        return std::nullopt;
    }
    address.port = portNumber(port);
    return address;
}

std::string hostForUrl(const std::string& host) {
    return host.find(':') == std::string::npos ? host : "[" + host + "]";
}

}  // namespace axlsim
