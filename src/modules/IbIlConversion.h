// SPDX-License-Identifier: MIT
#pragma once

// Conversion between the 16-bit IB IL process data words of the analog module and analog values
// in the engineering unit. A raw word counts in steps of 1/3000 of the unit (30000 is 10.0).

float from_ib_il(unsigned short raw);

// Truncates toward zero and keeps the low 16 bits of the count: values above 21.845 wrap
// around (22.0 is sent as 464) instead of stopping at 65535.
unsigned short to_ib_il(float value);
