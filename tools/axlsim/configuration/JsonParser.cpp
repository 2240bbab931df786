// SPDX-License-Identifier: MIT
#include "axlsim/configuration/JsonParser.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <unordered_map>
#include <vector>

#include "axlsim/base/ValueText.h"
#include "axlsim/configuration/ConfigError.h"

namespace axlsim {

namespace {

using Json = nlohmann::json;

// "last read" can hold the whole rest of a file (an unterminated comment); this much of it is
// enough to recognise the place. A number is cut as short.
constexpr std::size_t kLastReadShown = 40;

// Objects and lists inside one another: far deeper than any configuration, shallow enough that
// neither the pointers of the places nor the parser's stack grow without bound.
constexpr int kDeepestNesting = 256;

// A line and a column, both from 1.
struct Place {
    std::size_t line = 1;
    std::size_t column = 1;
};

std::string placeText(const Place& place) {
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
}

// How far the parser has read: the character after the last one read, and the line that
// character is on with where that line starts. Counted as the parser advances, so that placing a
// key costs nothing however long the text.
class ReadPosition {
public:
    explicit ReadPosition(const std::string& text)
        : begin_(text.data()), furthest_(text.data()), lineStart_(text.data()) {}

    void advancedTo(const char* at) {
        if (at <= furthest_) {
            return;
        }
        if (*furthest_ == '\n') {
            ++line_;
            lineStart_ = furthest_ + 1;
        }
        furthest_ = at;
    }

    const char* furthest() const { return furthest_; }

    // The line of the last character read.
    std::size_t lineRead() const {
        return furthest_ > lineStart_ || furthest_ == begin_ ? line_ : line_ - 1;
    }

    // The place of a character read already; counts back from the furthest, so only for an
    // error.
    Place placeOf(const char* at) const {
        std::size_t line = line_;
        const char* lineStart = lineStart_;
        while (at < lineStart) {
            --line;
            lineStart = std::find(std::make_reverse_iterator(lineStart - 1),
                                  std::make_reverse_iterator(begin_), '\n')
                            .base();
        }
        return Place{line, static_cast<std::size_t>(at - lineStart) + 1};
    }

private:
    const char* begin_;
    const char* furthest_;
    std::size_t line_ = 1;
    const char* lineStart_;
};

// Walks the text for the parser and tells the read position how far it has read.
class TrackedIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    TrackedIterator() = default;
    TrackedIterator(const char* at, ReadPosition* position) : at_(at), position_(position) {}

    reference operator*() const { return *at_; }
    TrackedIterator& operator++() {
        ++at_;
        if (position_ != nullptr) {
            position_->advancedTo(at_);
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
    ReadPosition* position_ = nullptr;
};

// Builds the document from the parser's events, knowing where the parser is: the objects and
// lists it is inside, with the keys each object has had. nlohmann's own builder with a callback
// looks through the whole of a list after each object in it, which makes a long list of objects
// take quadratic time; this one does nothing per value that depends on the size of the text.
class Builder {
public:
    Builder(const std::string& file, const ReadPosition& position)
        : file_(file), position_(position) {}

    Json take() { return std::move(root_); }

    // Where the last object, list, key or value ended: anything after it and before the parser's
    // error is blanks, commas, colons, brackets and comments.
    const char* lastEvent() const { return lastEvent_; }

    bool null() { return value(Json()); }
    bool boolean(bool value) { return this->value(Json(value)); }
    bool number_integer(Json::number_integer_t value) { return this->value(Json(value)); }
    bool number_unsigned(Json::number_unsigned_t value) { return this->value(Json(value)); }
    bool number_float(Json::number_float_t value, const std::string& /*unused*/) {
        return this->value(Json(value));
    }
    bool string(std::string& value) { return this->value(Json(std::move(value))); }
    bool binary(Json::binary_t& value) { return this->value(Json::binary(std::move(value))); }
    bool start_object(std::size_t /*unused*/) { return start(Json::object()); }
    bool start_array(std::size_t /*unused*/) { return start(Json::array()); }
    bool end_object() { return end(); }
    bool end_array() { return end(); }
    bool key(std::string& key) {
        lastEvent_ = position_.furthest();
        Level& level = levels_.back();
        // The last character read is the key's closing quote.
        const std::size_t line = position_.lineRead();
        const auto [first, added] = level.lines.try_emplace(key, line);
        if (!added) {
            const std::string object = level.pointer.empty() ? "the top level" : level.pointer;
            throw ConfigError(file_, jsonparser::member(level.pointer, key),
                              "the key " + inQuotes(key) + " is given twice in " + object +
                                  ", on line " + std::to_string(first->second) + " and on line " +
                                  std::to_string(line) + "; give each key once");
        }
        level.member = &(*level.node)[key];
        level.key = std::move(key);
        return true;
    }
    template <class Exception>
    bool parse_error(std::size_t /*unused*/, const std::string& /*unused*/,
                     const Exception& error) {
        throw error;
    }

private:
    struct Level {
        Json* node;
        std::size_t index;
        std::string pointer;
        std::unordered_map<std::string, std::size_t> lines;  // key -> the line it was given on
        std::string key;                                     // the key whose value is being read
        Json* member = nullptr;                              // and where its value goes
    };

    // Puts a value where the parser is; returns where it went.
    Json* place(Json&& value) {
        lastEvent_ = position_.furthest();
        if (levels_.empty()) {
            root_ = std::move(value);
            return &root_;
        }
        Level& level = levels_.back();
        if (level.node->is_array()) {
            ++level.index;
            level.node->push_back(std::move(value));
            return &level.node->back();
        }
        *level.member = std::move(value);
        return level.member;
    }

    bool value(Json&& value) {
        place(std::move(value));
        return true;
    }

    // The bracket that opens it is the last character read.
    bool start(Json&& container) {
        if (levels_.size() >= static_cast<std::size_t>(kDeepestNesting)) {
            throw ConfigError(file_, "",
                              "the objects and lists are nested deeper than " +
                                  std::to_string(kDeepestNesting) + " levels at " +
                                  placeText(position_.placeOf(position_.furthest() - 1)) +
                                  "; axlsim reads at most " + std::to_string(kDeepestNesting));
        }
        std::string pointer = childPointer();
        Json* node = place(std::move(container));
        levels_.push_back(Level{node, 0, std::move(pointer), {}, {}, nullptr});
        return true;
    }

    bool end() {
        levels_.pop_back();
        lastEvent_ = position_.furthest();
        return true;
    }

    std::string childPointer() const {
        if (levels_.empty()) {
            return "";
        }
        const Level& level = levels_.back();
        return level.node->is_array() ? jsonparser::element(level.pointer, level.index)
                                      : jsonparser::member(level.pointer, level.key);
    }

    const std::string& file_;
    const ReadPosition& position_;
    Json root_;
    std::vector<Level> levels_;
    const char* lastEvent_ = nullptr;
};

// Finds the line on which the key at a JSON pointer is first given, without building the
// document.
class KeyFinder {
public:
    KeyFinder(const std::string& pointer, const ReadPosition& position) : position_(position) {
        Json::json_pointer rest(pointer);
        while (!rest.empty()) {
            wanted_.insert(wanted_.begin(), rest.back());
            rest.pop_back();
        }
    }

    std::optional<std::size_t> line() const { return line_; }

    bool null() { return value(); }
    bool boolean(bool /*unused*/) { return value(); }
    bool number_integer(Json::number_integer_t /*unused*/) { return value(); }
    bool number_unsigned(Json::number_unsigned_t /*unused*/) { return value(); }
    bool number_float(Json::number_float_t /*unused*/, const std::string& /*unused*/) {
        return value();
    }
    bool string(std::string& /*unused*/) { return value(); }
    bool binary(Json::binary_t& /*unused*/) { return value(); }
    bool start_object(std::size_t /*unused*/) { return start(false); }
    bool start_array(std::size_t /*unused*/) { return start(true); }
    bool end_object() { return end(); }
    bool end_array() { return end(); }
    bool key(std::string& key) {
        Level& level = levels_.back();
        level.child = key;
        if (level.onTheWay && levels_.size() == wanted_.size() && key == wanted_.back()) {
            line_ = position_.lineRead();
            return false;  // found: read no further
        }
        return true;
    }
    bool parse_error(std::size_t /*unused*/, const std::string& /*unused*/,
                     const Json::exception& /*unused*/) {
        return false;
    }

private:
    struct Level {
        bool array;
        bool onTheWay;      // every key and index up to here is the wanted one's
        std::string child;  // the key or index being read
        std::size_t index;
    };

    bool start(bool array) {
        const std::size_t depth = levels_.size();
        const bool onTheWay =
            levels_.empty() || (levels_.back().onTheWay && depth < wanted_.size() &&
                                levels_.back().child == wanted_[depth - 1]);
        levels_.push_back(Level{array, onTheWay, array ? "0" : "", 0});
        return true;
    }

    bool end() {
        levels_.pop_back();
        return value();
    }

    bool value() {
        if (!levels_.empty() && levels_.back().array) {
            Level& level = levels_.back();
            level.child = std::to_string(++level.index);
        }
        return true;
    }

    const ReadPosition& position_;
    std::vector<std::string> wanted_;
    std::vector<Level> levels_;
    std::optional<std::size_t> line_;
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

// Where the block comment that the parser found unterminated opens: the parser reads on from the
// end of the last thing it reported (less the one character a number looks ahead), through
// blanks, structure and whole comments, to the comment that has no end.
const char* openComment(const std::string& text, const char* from) {
    const char* const end = text.data() + text.size();
    const char* at = from == nullptr ? text.data() : std::max(text.data(), from - 1);
    const auto endsLine = [](char c) { return c == '\n' || c == '\r' || c == '\0'; };
    while (at + 1 < end) {
        if (at[0] == '/' && at[1] == '/') {
            at = std::find_if(at + 2, end, endsLine);
        } else if (at[0] == '/' && at[1] == '*') {
            const char* close = at + 2;
            while (close + 1 < end && *close != '\0' && !(close[0] == '*' && close[1] == '/')) {
                ++close;
            }
            if (close + 1 >= end || *close == '\0') {
                return at;
            }
            at = close + 2;
        } else {
            ++at;
        }
    }
    return nullptr;
}

// The message of a number that no double holds, placed where the number starts.
std::string outOfRange(const std::string& what, const std::string& text,
                       const ReadPosition& position) {
    const auto open = what.find('\'');
    const auto close = what.rfind('\'');
    if (open == std::string::npos || close <= open) {
        return what;
    }
    const std::string number = what.substr(open + 1, close - open - 1);
    // The parser has read the number and at most one character after it.
    const auto read = static_cast<std::size_t>(position.furthest() - text.data());
    const auto start = text.rfind(number, read);
    const std::string shown = shortText(number, kLastReadShown);
    const std::string place =
        start == std::string::npos ? "" : placeText(position.placeOf(text.data() + start)) + ": ";
    return place + "the number " + shown +
           " is out of range; axlsim reads numbers from -1.7976931348623157e308 to "
           "1.7976931348623157e308";
}

}  // namespace

std::string jsonparser::member(const std::string& path, std::string_view key) {
    return (Json::json_pointer(path) / std::string(key)).to_string();
}

std::string jsonparser::element(const std::string& path, std::size_t index) {
    return (Json::json_pointer(path) / index).to_string();
}

Json jsonparser::parse(const std::string& text, const std::string& file) {
    ReadPosition position(text);
    Builder builder(file, position);
    try {
        Json::sax_parse(TrackedIterator(text.data(), &position),
                        TrackedIterator(text.data() + text.size(), nullptr), &builder,
                        Json::input_format_t::json, true, true);
        return builder.take();
    } catch (const Json::parse_error& error) {
        std::string reason = syntaxReason(error.what());
        if (reason.find("missing closing '*/'") != std::string::npos) {
            if (const char* open = openComment(text, builder.lastEvent()); open != nullptr) {
                const auto lastRead = reason.find("; last read");
                reason = placeText(position.placeOf(open)) +
                         ": the comment that opens here has no end: missing closing '*/'" +
                         (lastRead == std::string::npos ? "" : reason.substr(lastRead));
            }
        }
        throw ConfigError(file, "", reason);
    } catch (const Json::out_of_range& error) {
        throw ConfigError(file, "", outOfRange(error.what(), text, position));
    } catch (const Json::exception& error) {
        throw ConfigError(file, "", error.what());
    }
}

std::optional<std::size_t> jsonparser::keyLine(const std::string& text,
                                               const std::string& pointer) {
    ReadPosition position(text);
    KeyFinder finder(pointer, position);
    Json::sax_parse(TrackedIterator(text.data(), &position),
                    TrackedIterator(text.data() + text.size(), nullptr), &finder,
                    Json::input_format_t::json, true, true);
    return finder.line();
}

}  // namespace axlsim
