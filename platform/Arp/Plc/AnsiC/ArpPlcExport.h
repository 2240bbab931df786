// SPDX-License-Identifier: MIT
#pragma once

// Entry points of the controller's PLC C interface stay visible to libraries that are built with
// hidden visibility.
#define ARP_PLC_API __attribute__((visibility("default")))
