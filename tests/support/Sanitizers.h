// SPDX-License-Identifier: MIT
#pragma once

// Which sanitizer a test program is built with: GCC defines __SANITIZE_ADDRESS__ and
// __SANITIZE_THREAD__, clang tells through __has_feature.

#if defined(__has_feature)
#define AXL_TEST_HAS_FEATURE(feature) __has_feature(feature)
#else
#define AXL_TEST_HAS_FEATURE(feature) 0
#endif

namespace testsupport {

constexpr bool builtWithAddressSanitizer() {
#if defined(__SANITIZE_ADDRESS__) || AXL_TEST_HAS_FEATURE(address_sanitizer)
    return true;
#else
    return false;
#endif
}

constexpr bool builtWithThreadSanitizer() {
#if defined(__SANITIZE_THREAD__) || AXL_TEST_HAS_FEATURE(thread_sanitizer)
    return true;
#else
    return false;
#endif
}

}  // namespace testsupport
