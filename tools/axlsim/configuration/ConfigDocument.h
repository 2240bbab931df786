// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace axlsim {

using Json = nlohmann::json;

// A JSON pointer to a member ("~" and "/" in the key escaped) or to an element of a list.
std::string member(const std::string& path, std::string_view key);
std::string element(const std::string& path, std::size_t index);

// The reading of one configuration file: every failure is a ConfigError that names the file, the
// place and the reason.
class Document {
public:
    explicit Document(std::string file) : file_(std::move(file)) {}

    [[noreturn]] void fail(const std::string& path, const std::string& reason) const;

    // The keys of several places, one after another: the keys a reader knows.
    static std::vector<std::string_view> keysOf(
        std::initializer_list<std::span<const std::string_view>> places);

    // The node as an object whose keys are all among `keys`.
    const Json& object(const Json& node, const std::string& path,
                       std::span<const std::string_view> keys) const;
    std::string text(const Json& node, const std::string& path) const;
    bool flag(const Json& node, const std::string& path) const;
    int64_t integer(const Json& node, const std::string& path, int64_t min, int64_t max) const;
    // Any finite number from min to max.
    double number(const Json& node, const std::string& path, double min, double max) const;
    // A time in whole milliseconds, in the range of Milliseconds.
    std::chrono::milliseconds milliseconds(const Json& node, const std::string& path) const;

    // A key of "mappings" or "services": an unsigned number written as a text.
    unsigned tableKey(const std::string& key, const std::string& path) const;

    std::map<std::string, std::string> texts(const Json& node, const std::string& path) const;

private:
    std::string file_;
};

}  // namespace axlsim
