// SPDX-License-Identifier: MIT
#pragma once

// Symbols of the host's interface library stay visible to drivers that are built with hidden
// visibility.
#define ORBEL_API __attribute__((visibility("default")))
