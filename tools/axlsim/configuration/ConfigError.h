// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

namespace axlsim {

// A configuration that cannot be read: the file, the place in it (a JSON pointer such as
// "/services/2/params/PinNum", or a line and column) and the reason.
class ConfigError : public std::runtime_error {
public:
    ConfigError(std::string file, std::string place, std::string reason);

    const std::string& file() const { return file_; }
    const std::string& place() const { return place_; }
    const std::string& reason() const { return reason_; }

private:
    std::string file_;
    std::string place_;
    std::string reason_;
};

}  // namespace axlsim
