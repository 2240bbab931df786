// SPDX-License-Identifier: MIT
#pragma once

// Classes and functions of the Arp runtime libraries whose symbols, type information and virtual
// tables are used across library boundaries stay visible to libraries built with hidden
// visibility.
#define ARP_SYSTEM_API __attribute__((visibility("default")))
