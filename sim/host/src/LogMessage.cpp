// SPDX-License-Identifier: MIT
#include "LogMessage.h"

#include <cstdarg>
#include <string>

#include "ObserverHub.h"
#include "orbel/CallScope.h"
#include "orbel/DriverThreads.h"
#include "orbel/LogFormat.h"

namespace {

// On a driver thread, the driver that owns it; elsewhere the driver of the innermost call scope.
const CSI_base* attributedDriver() {
    if (orbel::isDriverThread()) {
        return orbel::currentThreadDriver();
    }
    return orbel::CallScope::current();
}

}  // namespace

extern "C" void logMessage(int level, const char* format, ...) {
    std::string text;
    bool rendered = false;
    va_list args;
    va_start(args, format);
    try {
        text = orbel::renderLogLine(format, args);
        rendered = true;
    } catch (...) {
    }
    va_end(args);
    if (!rendered) {
        return;
    }
    const CSI_base* driver = attributedDriver();
    const std::string_view shape = format != nullptr ? format : "";
    orbel::ObserverHub::instance().report(
        [&](orbel::HostObserver& o) { o.logged(driver, level, shape, text); });
}
