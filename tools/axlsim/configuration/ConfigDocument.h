// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
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
    // `text`, when given, is what was parsed: messages can then name the lines of keys.
    explicit Document(std::string file, const std::string* text = nullptr)
        : file_(std::move(file)), text_(text) {}

    [[noreturn]] void fail(const std::string& path, const std::string& reason) const;

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

    // Refuses a second key of `table` (at `path`) that names the same number as an earlier key,
    // "01" after "1": a table keyed by numbers would otherwise keep one of them silently. `what`
    // is what the keys name ("service").
    class NumberedKeys {
    public:
        NumberedKeys(const Document& doc, std::string path, std::string what)
            : doc_(doc), path_(std::move(path)), what_(std::move(what)) {}

        void add(unsigned number, const std::string& key);

    private:
        const Document& doc_;
        std::string path_;
        std::string what_;
        std::unordered_map<unsigned, std::string> keys_;
    };

    // The line on which the key at `path` is given, when the text is known.
    std::optional<std::size_t> lineOf(const std::string& path) const;

    std::map<std::string, std::string> texts(const Json& node, const std::string& path) const;

private:
    std::string file_;
    const std::string* text_;
};

// The keys of several places, one after another: the keys a reader knows.
std::vector<std::string_view> keysOf(
    std::initializer_list<std::span<const std::string_view>> places);

}  // namespace axlsim
