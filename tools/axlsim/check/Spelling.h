// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace axlsim::configcheck {

// The known text that differs from `text` only in letter case or blanks, if any (else empty).
std::string meant(const std::string& text, std::span<const std::string_view> known);

// The known key nearest to a key the driver does not read, if one is near enough to be meant:
// at most a third of its letters differ, ignoring case and blanks (else empty).
std::string nearestKey(const std::string& key, std::span<const std::string_view> known);

// The known texts in quotes, for a message: "\"a\", \"b\" or \"c\"".
std::string listed(std::span<const std::string_view> known);

}  // namespace axlsim::configcheck
