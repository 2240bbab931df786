// SPDX-License-Identifier: MIT
#pragma once

#include "HostExport.h"

// Writes one log line at the given level; the format is a printf format. Deliberately not
// declared with a printf format attribute: drivers pass argument lists that do not match their
// formats, and the host copes with that at run time.
extern "C" ORBEL_API void logMessage(int level, const char* format, ...);
