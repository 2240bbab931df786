// SPDX-License-Identifier: MIT
#include "axlsim/check/Spelling.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "axlsim/base/ValueText.h"

namespace axlsim::configcheck {

namespace {

std::string folded(std::string_view text) {
    std::string result;
    for (char c : text) {
        if (std::isspace(static_cast<unsigned char>(c)) == 0) {
            result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return result;
}

// The edits (insertions, deletions, replacements) that turn one text into the other.
std::size_t editDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

std::string meant(const std::string& text, std::span<const std::string_view> known) {
    for (std::string_view candidate : known) {
        if (folded(text) == folded(candidate)) {
            return std::string(candidate);
        }
    }
    return "";
}

std::string nearestKey(const std::string& key, std::span<const std::string_view> known) {
    std::string nearest;
    std::size_t best = 0;
    for (std::string_view candidate : known) {
        const std::size_t distance = editDistance(folded(key), folded(candidate));
        if (distance <= std::max<std::size_t>(2, folded(candidate).size() / 3) &&
            (nearest.empty() || distance < best)) {
            nearest = std::string(candidate);
            best = distance;
        }
    }
    return nearest;
}

std::string listed(std::span<const std::string_view> known) {
    std::string text;
    const std::size_t n = known.size();
    for (std::size_t i = 0; i < n; ++i) {
        text += (i == 0 ? "" : i + 1 == n ? " or " : ", ") + inQuotes(known[i]);
    }
    return text;
}

}  // namespace axlsim::configcheck
