// SPDX-License-Identifier: MIT
#include "axlsim/configuration/JsonParser.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <vector>

#include "axlsim/configuration/ConfigError.h"
#include "axlsim/render/ValueText.h"

namespace axlsim {

namespace {

using Json = nlohmann::json;

// "last read" can hold the whole rest of a file (an unterminated comment); this much of it is
// enough to recognise the place.
constexpr std::size_t kLastReadShown = 40;

// Walks the text for the parser and remembers how far it has read, so that a key can be placed
// on its line.
class TrackedIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TrackedIterator() = default;
    TrackedIterator(const char* at, const char** furthest) : at_(at), furthest_(furthest) {}

    reference operator*() const { return *at_; }
    TrackedIterator& operator++() {
        ++at_;
        if (furthest_ != nullptr) {
            *furthest_ = std::max(*furthest_, at_);
        }
        return *this;
    }
    TrackedIterator operator++(int) {
        TrackedIterator before = *this;
        ++*this;
        return before;
    }
    bool operator==(const TrackedIterator& other) const { return at_ == other.at_; }

private:
    const char* at_ = nullptr;
    const char** furthest_ = nullptr;
};

// Where the parser is: the objects and arrays it is inside, with the keys each object has had.
class Nesting {
public:
    Nesting(const std::string& text, const std::string& file, const char* const& furthest)
        : text_(text), file_(file), furthest_(furthest) {}

    bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
        switch (event) {
            case Json::parse_event_t::object_start:
                levels_.push_back(Level{false, 0, childPointer(), {}, {}});
                break;
            case Json::parse_event_t::array_start:
                levels_.push_back(Level{true, 0, childPointer(), {}, {}});
                break;
            case Json::parse_event_t::key:
                key(parsed.get<std::string>());
                break;
            case Json::parse_event_t::object_end:
            case Json::parse_event_t::array_end:
                levels_.pop_back();
                valueDone();
                break;
            case Json::parse_event_t::value:
                valueDone();
                break;
        }
        return true;
    }

private:
    struct Level {
        bool array;
        std::size_t index;
        std::string pointer;
        std::map<std::string, std::size_t> lines;  // key -> the line it was given on
        std::string key;                           // the key whose value is being read
    };

    std::string childPointer() const {
        if (levels_.empty()) {
            return "";
        }
        const Level& level = levels_.back();
        return level.array ? JsonParser::element(level.pointer, level.index)
                           : JsonParser::member(level.pointer, level.key);
    }

    void valueDone() {
        if (!levels_.empty() && levels_.back().array) {
            ++levels_.back().index;
        }
    }

    void key(const std::string& key) {
        Level& level = levels_.back();
        const std::size_t line = lineRead();
        const auto [first, added] = level.lines.try_emplace(key, line);
        if (!added) {
            const std::string object = level.pointer.empty() ? "the top level" : level.pointer;
            throw ConfigError(file_, JsonParser::member(level.pointer, key),
                              "the key " + inQuotes(key) + " is given twice in " + object +
                                  ", on line " + std::to_string(first->second) + " and on line " +
                                  std::to_string(line) + "; give each key once");
        }
        level.key = key;
    }

    // The line of the last character read: the key's closing quote.
    std::size_t lineRead() const {
        const auto read = static_cast<std::size_t>(furthest_ - text_.data());
        return 1 + static_cast<std::size_t>(std::count(
                       text_.begin(),
                       text_.begin() + static_cast<std::ptrdiff_t>(std::min(read, text_.size())),
                       '\n'));
    }

    const std::string& text_;
    const std::string& file_;
    const char* const& furthest_;
    std::vector<Level> levels_;
};

// nlohmann's messages start with an identifier and name the line and column themselves; what
// they show as last read is cut short.
std::string syntaxReason(const std::string& what) {
    const auto start = what.find("] ");
    std::string reason = start == std::string::npos ? what : what.substr(start + 2);
    const std::string lastRead = "; last read: '";
    const auto shown = reason.find(lastRead);
    if (shown == std::string::npos) {
        return reason;
    }
    const std::size_t from = shown + lastRead.size();
    const std::size_t length = reason.size() - from - (reason.back() == '\'' ? 1 : 0);
    if (length > kLastReadShown) {
        reason = reason.substr(0, from + kLastReadShown) + "...'";
    }
    return reason;
}

}  // namespace

std::string JsonParser::member(const std::string& path, std::string_view key) {
    return (Json::json_pointer(path) / std::string(key)).to_string();
}

std::string JsonParser::element(const std::string& path, std::size_t index) {
    return (Json::json_pointer(path) / index).to_string();
}

Json JsonParser::parse(const std::string& text, const std::string& file) {
    const char* furthest = text.data();
    Nesting nesting(text, file, furthest);
    try {
        return Json::parse(TrackedIterator(text.data(), &furthest),
                           TrackedIterator(text.data() + text.size(), nullptr), std::ref(nesting),
                           true, true);
    } catch (const Json::parse_error& error) {
        throw ConfigError(file, "", syntaxReason(error.what()));
    } catch (const Json::exception& error) {
        // A number the reader cannot hold (1E400, say) fails the parse with another exception.
        throw ConfigError(file, "", error.what());
    }
}

}  // namespace axlsim
