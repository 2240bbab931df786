// SPDX-License-Identifier: MIT
#include "FaultRow.h"

#include "hosting/DriverRig.h"

namespace faultmatrix {

using hosting::DriverRig;

DriverConfig digitalRecords() {
    return DriverConfig::digital(DriverRig::kDigitalPosition)
        .digitalIn(kDigitalIn, "3")
        .digitalOut(kPin5, "5", "1")
        .digitalOut(kPin6, "6", "0")
        .restart(kRestart);
}

DriverConfig analogRecords() {
    return DriverConfig::analog(DriverRig::kAnalogPosition)
        .analogIn(kAnalogIn, "0")
        .analogOut(kChannel1, "1", "5")
        .restart(kRestart);
}

LoggedLine failure(const char* format, const std::string& error) {
    std::string text = format;
    text.replace(text.find("%s"), 2, error);
    return {2, format, text};
}

LoggedLine notice(const char* text) {
    return {4, text, text};
}

std::vector<LoggedLine> readLockKept() {
    return {failure(kNoUnlock, kInUnlockTimedOut), failure(kNoBeginRead, kReadLockStillHeld)};
}

std::vector<LoggedLine> writeLockKept() {
    return {failure(kNoUnlock, kOutUnlockTimedOut), failure(kNoBeginWrite, kWriteLockStillHeld)};
}

RowNotes outputLockKept(const std::string& gds, const std::string& bus,
                        const std::string& nextEvent, const std::string& after) {
    return {.neutral = "GDS holds " + gds +
                       "; the copy to the bus fails while the host thread still holds the lock, " +
                       bus,
            .next = nextEvent + ": its Begin is refused, its End frees the lock, its copy brings " +
                    gds + "; the one after is written (" + after + ")"};
}

void PrintTo(const FaultRow& row, std::ostream* out) {
    *out << row.fault.call << " at " << row.fault.site;
}

}  // namespace faultmatrix
