// SPDX-License-Identifier: MIT
#include "VcdReader.h"

#include <map>
#include <sstream>
#include <stdexcept>

namespace axlsimtest {

namespace {

// The words of a declaration up to its "$end".
std::vector<std::string> untilEnd(std::istringstream& in) {
    std::vector<std::string> words;
    std::string word;
    while (in >> word && word != "$end") {
        words.push_back(word);
    }
    if (word != "$end") {
        throw std::runtime_error("a declaration without $end");
    }
    return words;
}

std::string joined(const std::vector<std::string>& scopes, const std::string& name) {
    std::string path;
    for (const std::string& scope : scopes) {
        path += scope + ".";
    }
    return path + name;
}

}  // namespace

VcdReader::VcdReader(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> scopes;
    std::map<std::string, std::string> paths;  // code -> path
    std::string word;
    while (in >> word && word != "$enddefinitions") {
        if (word == "$scope") {
            const auto words = untilEnd(in);
            if (words.size() != 2) {
                throw std::runtime_error("a malformed $scope");
            }
            scopes.push_back(words[1]);
        } else if (word == "$upscope") {
            untilEnd(in);
            if (scopes.empty()) {
                throw std::runtime_error("$upscope without $scope");
            }
            scopes.pop_back();
        } else if (word == "$var") {
            const auto words = untilEnd(in);
            if (words.size() != 4) {
                throw std::runtime_error("a malformed $var");
            }
            const std::string path = joined(scopes, words[3]);
            variables_.push_back(Variable{words[0], std::stoi(words[1]), path});
            if (!paths.emplace(words[2], path).second) {
                throw std::runtime_error("a code declared twice: " + words[2]);
            }
        } else if (word == "$timescale") {
            const auto words = untilEnd(in);
            timescale_ = words.empty() ? "" : words[0];
        } else if (word == "$comment" || word == "$version" || word == "$date") {
            untilEnd(in);
        } else {
            throw std::runtime_error("unexpected in the header: " + word);
        }
    }
    if (word != "$enddefinitions") {
        throw std::runtime_error("no $enddefinitions");
    }
    untilEnd(in);
    if (!scopes.empty()) {
        throw std::runtime_error("a $scope is not closed");
    }

    auto change = [&](int64_t time, const std::string& code, std::string value) {
        const auto path = paths.find(code);
        if (path == paths.end()) {
            throw std::runtime_error("a change of an undeclared variable: " + code);
        }
        changes_.push_back(Change{time, path->second, std::move(value)});
    };
    int64_t time = -1;
    while (in >> word) {
        if (word == "$dumpvars" || word == "$end") {
            continue;
        }
        if (word[0] == '#') {
            const int64_t next = std::stoll(word.substr(1));
            if (next < time) {
                throw std::runtime_error("time goes back to " + word);
            }
            time = next;
        } else if (word[0] == 'b' || word[0] == 'r') {
            std::string code;
            if (!(in >> code)) {
                throw std::runtime_error("a vector change without its variable");
            }
            change(time, code, word);
        } else if (word[0] == '0' || word[0] == '1' || word[0] == 'x' || word[0] == 'z') {
            change(time, word.substr(1), word.substr(0, 1));
        } else {
            throw std::runtime_error("a malformed change: " + word);
        }
        if (time < 0) {
            throw std::runtime_error("a change before the first time");
        }
    }
}

std::vector<VcdReader::Change> VcdReader::changesOf(const std::string& path) const {
    std::vector<Change> found;
    for (const Change& change : changes_) {
        if (change.path == path) {
            found.push_back(change);
        }
    }
    return found;
}

const VcdReader::Variable* VcdReader::variable(const std::string& path) const {
    for (const Variable& variable : variables_) {
        if (variable.path == path) {
            return &variable;
        }
    }
    return nullptr;
}

}  // namespace axlsimtest
