// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace axlsim {

// Where axlsim serve listens: a host (a name, an IPv4 or an IPv6 address) and a port.
struct ListenAddress {
    std::string host;
    int port = 0;
};

// Why a text is no port (empty when it is one): only decimal digits from 0 to 65535 are read, so
// "08080" is port 8080 and "0x50", "-1" and "+80" are refused.
std::string portProblem(std::string_view text);

// The port a text names; call only for a text without a problem.
int portNumber(std::string_view text);

// A host as --listen and --modbus take it, an IPv6 address also in brackets ("[::1]"), without
// the brackets; nothing for an empty text or unbalanced brackets.
std::optional<std::string> hostOf(std::string_view text);

// "[HOST:]PORT" as --modbus takes it ("502", "0.0.0.0:502", "localhost:502", "[::1]:502",
// "::1:502"); the host is `defaultHost` when the text has none. Nothing for any other text.
std::optional<ListenAddress> listenAddressOf(std::string_view text, const std::string& defaultHost);

// A host as a URL or a HOST:PORT text shows it: an IPv6 address in brackets.
std::string hostForUrl(const std::string& host);

}  // namespace axlsim
