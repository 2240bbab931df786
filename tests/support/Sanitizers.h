// SPDX-License-Identifier: MIT
#pragma once

// Which sanitizer a test program is built with: GCC defines __SANITIZE_ADDRESS__ and
// __SANITIZE_THREAD__, clang tells through __has_feature. The macros are for the preprocessor
// (an #include that only a sanitizer's build has), the functions for code.

#if defined(__has_feature)
#define AXL_TEST_HAS_FEATURE(feature) __has_feature(feature)
#else
#define AXL_TEST_HAS_FEATURE(feature) 0
#endif

#if defined(__SANITIZE_ADDRESS__) || AXL_TEST_HAS_FEATURE(address_sanitizer)
#define AXL_TEST_ADDRESS_SANITIZER 1
#else
#define AXL_TEST_ADDRESS_SANITIZER 0
#endif

#if defined(__SANITIZE_THREAD__) || AXL_TEST_HAS_FEATURE(thread_sanitizer)
#define AXL_TEST_THREAD_SANITIZER 1
#else
#define AXL_TEST_THREAD_SANITIZER 0
#endif

namespace testsupport {

constexpr bool builtWithAddressSanitizer() {
    return AXL_TEST_ADDRESS_SANITIZER == 1;
}

constexpr bool builtWithThreadSanitizer() {
    return AXL_TEST_THREAD_SANITIZER == 1;
}

}  // namespace testsupport
