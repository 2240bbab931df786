// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string_view>

// The last error text of the PLC C interface, one per thread, like errno.
namespace vplc::lastError {

void set(std::string_view text);

// Copies the text into the buffer, cut to bufferSize - 1 characters and a NUL, and clears it.
void take(char* buffer, std::size_t bufferSize);

}  // namespace vplc::lastError
