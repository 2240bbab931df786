// SPDX-License-Identifier: MIT
#include "LastError.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace vplc::lastError {

namespace {

thread_local std::string lastErrorText;

}  // namespace

void set(std::string_view text) {
    lastErrorText.assign(text);
}

void take(char* buffer, std::size_t bufferSize) {
    if (buffer != nullptr && bufferSize > 0) {
        std::size_t length = std::min(lastErrorText.size(), bufferSize - 1);
        std::memcpy(buffer, lastErrorText.data(), length);
        buffer[length] = '\0';
    }
    lastErrorText.clear();
}

}  // namespace vplc::lastError
