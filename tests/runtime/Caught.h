// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

// The exception of type E that f throws, or nothing if it returns. Exceptions of other types
// pass on (and fail the test).
template <class E, class F>
std::optional<E> caught(F&& f) {
    try {
        f();
    } catch (const E& e) {
        return e;
    }
    return std::nullopt;
}
