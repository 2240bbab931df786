// SPDX-License-Identifier: MIT
#include "axlsim/configuration/ConfigDocument.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/ConfigError.h"
#include "axlsim/configuration/JsonParser.h"
#include "axlsim/configuration/Milliseconds.h"

namespace axlsim {

namespace {

std::string list(std::span<const std::string_view> keys) {
    std::string text;
    for (std::string_view key : keys) {
        text += (text.empty() ? "" : ", ") + std::string(key);
    }
    return text;
}

}  // namespace

std::string member(const std::string& path, std::string_view key) {
    return jsonparser::member(path, key);
}

std::string element(const std::string& path, std::size_t index) {
    return jsonparser::element(path, index);
}

void Document::fail(const std::string& path, const std::string& reason) const {
    throw ConfigError(file_, path.empty() ? "/" : path, reason);
}

std::vector<std::string_view> keysOf(
    std::initializer_list<std::span<const std::string_view>> places) {
    std::vector<std::string_view> all;
    for (std::span<const std::string_view> place : places) {
        all.insert(all.end(), place.begin(), place.end());
    }
    return all;
}

const Json& Document::object(const Json& node, const std::string& path,
                             std::span<const std::string_view> keys) const {
    if (!node.is_object()) {
        fail(path, "expected an object");
    }
    for (const auto& [key, value] : node.items()) {
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
            fail(member(path, key),
                 "unknown key " + inQuotes(key) + " (known here: " + list(keys) + ")");
        }
    }
    return node;
}

std::string Document::text(const Json& node, const std::string& path) const {
    if (!node.is_string()) {
        fail(path, node.is_number()
                       ? "expected a text; the driver gets texts, write " + inQuotes(node.dump())
                       : "expected a text");
    }
    return node.get<std::string>();
}

bool Document::flag(const Json& node, const std::string& path) const {
    if (!node.is_boolean()) {
        fail(path, "expected true or false");
    }
    return node.get<bool>();
}

int64_t Document::integer(const Json& node, const std::string& path, int64_t min,
                          int64_t max) const {
    const std::string range =
        "expected a whole number from " + std::to_string(min) + " to " + std::to_string(max);
    if (node.is_number_unsigned()) {
        const uint64_t value = node.get<uint64_t>();
        if (value > static_cast<uint64_t>(max) || static_cast<int64_t>(value) < min) {
            fail(path, range);
        }
        return static_cast<int64_t>(value);
    }
    if (!node.is_number_integer()) {
        fail(path, range);
    }
    const int64_t value = node.get<int64_t>();
    if (value < min || value > max) {
        fail(path, range);
    }
    return value;
}

double Document::number(const Json& node, const std::string& path, double min, double max) const {
    if (!node.is_number() || !std::isfinite(node.get<double>()) || node.get<double>() < min ||
        node.get<double>() > max) {
        fail(path, "expected a number from " + numberText(min) + " to " + numberText(max));
    }
    return node.get<double>();
}

std::chrono::milliseconds Document::milliseconds(const Json& node, const std::string& path) const {
    if (!node.is_number_integer() ||
        (node.is_number_unsigned()
             ? node.get<uint64_t>() > static_cast<uint64_t>(kLongestMilliseconds)
             : node.get<int64_t>() < 0)) {
        fail(path, "expected a time in whole milliseconds, " + millisecondsRange());
    }
    return std::chrono::milliseconds(node.get<int64_t>());
}

unsigned Document::tableKey(const std::string& key, const std::string& path) const {
    const bool digits = !key.empty() && std::all_of(key.begin(), key.end(),
                                                    [](char c) { return c >= '0' && c <= '9'; });
    if (!digits || key.size() > 10 || std::stoull(key) > std::numeric_limits<uint32_t>::max()) {
        fail(path, "a key here is an unsigned number from 0 to 4294967295, written as a text");
    }
    return static_cast<unsigned>(std::stoul(key));
}

void Document::NumberedKeys::add(unsigned number, const std::string& key) {
    const auto [earlier, added] = keys_.try_emplace(number, key);
    if (added) {
        return;
    }
    // Named in the order of the file: the later key is the one to remove.
    std::string first = earlier->second;
    std::string second = key;
    std::optional<std::size_t> firstLine = doc_.lineOf(member(path_, first));
    std::optional<std::size_t> secondLine = doc_.lineOf(member(path_, second));
    if (firstLine && secondLine && *secondLine < *firstLine) {
        std::swap(first, second);
        std::swap(firstLine, secondLine);
    }
    const std::string lines = firstLine && secondLine
                                  ? ", on line " + std::to_string(*firstLine) + " and on line " +
                                        std::to_string(*secondLine)
                                  : "";
    doc_.fail(member(path_, second), "the keys " + inQuotes(first) + " and " + inQuotes(second) +
                                         " name the same " + what_ + " " + std::to_string(number) +
                                         " in " + path_ + lines + "; give each number once");
}

std::optional<std::size_t> Document::lineOf(const std::string& path) const {
    if (text_ == nullptr) {
        return std::nullopt;
    }
    return jsonparser::keyLine(*text_, path);
}

std::map<std::string, std::string> Document::texts(const Json& node,
                                                   const std::string& path) const {
    if (!node.is_object()) {
        fail(path, "expected an object of texts");
    }
    std::map<std::string, std::string> result;
    for (const auto& [key, value] : node.items()) {
        result[key] = text(value, member(path, key));
    }
    return result;
}

}  // namespace axlsim
