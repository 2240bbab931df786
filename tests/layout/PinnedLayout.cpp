// SPDX-License-Identifier: MIT
#include "PinnedLayout.h"

namespace layouttest {

namespace {

// 32-bit ARM EABI (the controller): 4-byte pointers and size_t, std::string 24 bytes, std::map 24,
// std::vector 12, 8-byte alignment only for 64-bit scalars.
[[maybe_unused]] const PinnedLayout kArmEabi{
    .abi = "ARM EABI, 32-bit",
    .tagElem = {76, {0, 4, 28, 52}},
    .appBlocInfo = {72, {0, 24, 48}},
    .mappingElem = {64, {0, 4, 28, 52}},
    .serviceParams = {80, {0, 1, 4, 8, 32, 56}},
    .spParams = {96, {0, 24, 48, 72}},
    .eventParams = {12, {0, 4, 8}},
    .hostBase = {152, {4, 28, 52, 148}},
    .threadBase = {12, {}},
};

// x86-64 System V (workstations): 8-byte pointers and size_t, std::string 32 bytes, std::map 48,
// std::vector 24.
[[maybe_unused]] const PinnedLayout kX86_64{
    .abi = "x86-64 System V",
    .tagElem = {104, {0, 8, 40, 72}},
    .appBlocInfo = {96, {0, 32, 64}},
    .mappingElem = {96, {0, 8, 40, 72}},
    .serviceParams = {120, {0, 1, 4, 8, 40, 72}},
    .spParams = {144, {0, 32, 64, 96}},
    .eventParams = {16, {0, 8, 12}},
    .hostBase = {256, {8, 56, 104, 248}},
    .threadBase = {24, {}},
};

}  // namespace

const PinnedLayout* pinnedLayout() {
#if defined(__arm__) && defined(__ARM_EABI__) && !defined(__aarch64__)
    return &kArmEabi;
#elif defined(__x86_64__) && defined(__LP64__)
    return &kX86_64;
#else
    return nullptr;
#endif
}

}  // namespace layouttest
