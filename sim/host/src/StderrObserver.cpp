// SPDX-License-Identifier: MIT
#include "StderrObserver.h"

#include <cstdio>
#include <string>

#include "DriverRegistry.h"

namespace orbel {

namespace {

// "[host] <what> <driver>" - the start every line shares.
std::string lineStart(std::string_view what, const CSI_base* driver) {
    std::string line = "[host] ";
    line += what;
    if (driver != nullptr) {
        line += ' ';
        line += DriverRegistry::instance().label(driver);
    }
    return line;
}

void writeLine(std::string line) {
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

void StderrObserver::logged(const CSI_base* driver, int level, std::string_view,
                            std::string_view text) {
    std::string line = lineStart("log L" + std::to_string(level), driver);
    line += ": ";
    line += text;
    writeLine(std::move(line));
}

void StderrObserver::published(const CSI_base* driver, uint32_t id, uint32_t size,
                               std::span<const uint8_t> payload) {
    std::string line = lineStart("publish", driver);
    line += ": event " + std::to_string(id) + " size " + std::to_string(size) + " [";
    for (std::size_t i = 0; i < payload.size(); ++i) {
        char hex[4];
        std::snprintf(hex, sizeof hex, i == 0 ? "%02X" : " %02X", payload[i]);
        line += hex;
    }
    line += ']';
    writeLine(std::move(line));
}

void StderrObserver::stopped(const CSI_base* driver, const stServiceParams_t* service,
                             std::string_view message) {
    std::string line = lineStart("stop", driver);
    if (service != nullptr) {
        line += " service " + std::to_string(service->nEventId) + ' ' + service->sServiceType;
    }
    line += ": ";
    line += message;
    writeLine(std::move(line));
}

void StderrObserver::threadStarted(const CSI_base* driver) {
    writeLine(lineStart("thread started", driver));
}

void StderrObserver::threadEnded(const CSI_base* driver, std::string_view how) {
    std::string line = lineStart("thread ended", driver);
    line += ": ";
    line += how;
    writeLine(std::move(line));
}

}  // namespace orbel
