// SPDX-License-Identifier: MIT
// Runs a number of driver scans or output events, or the same number of their floors, for an
// instruction counter (scripts/callgrind) that runs this program twice, with COUNT 0 and with
// COUNT N, and takes the difference: the instructions of N operations, without setting up and
// taking down.
//
//   axl_instructions scan  digital|analog          driver|floor COUNT
//   axl_instructions event digital|analog|two-pins driver|floor COUNT
//
// A scan run always runs one scan more than COUNT in one batch, so that both runs hand the
// scanning thread over and back exactly once and differ only in the scans. Exit status 0, or 2
// for a command line it cannot use.

#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "rig/EventRig.h"
#include "rig/ScanRig.h"
#include "rig/Workload.h"

// Called right before and right after the measured operations, on the main thread. An
// instruction counter that sees the names of the functions it executes can count only what lies
// between them (scripts/callgrind does so under qemu-arm).
extern "C" [[gnu::noinline]] void axlMeasuredStart() {
    asm volatile("");
}

extern "C" [[gnu::noinline]] void axlMeasuredEnd() {
    asm volatile("");
}

namespace {

using axlbench::EventKind;
using axlbench::ModuleKind;
using axlbench::Side;

std::optional<Side> sideOf(std::string_view text) {
    if (text == "driver") {
        return Side::Driver;
    }
    if (text == "floor") {
        return Side::Floor;
    }
    return std::nullopt;
}

std::optional<long> countOf(const char* text) {
    try {
        std::size_t used = 0;
        const long count = std::stol(text, &used);
        if (used == std::string_view(text).size() && count >= 0) {
            return count;
        }
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

int usage() {
    std::fputs(
        "usage: axl_instructions scan  digital|analog          driver|floor COUNT\n"
        "       axl_instructions event digital|analog|two-pins driver|floor COUNT\n",
        stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        return usage();
    }
    const std::string_view path = argv[1];
    const std::string_view what = argv[2];
    const std::optional<Side> side = sideOf(argv[3]);
    const std::optional<long> count = countOf(argv[4]);
    if (!side || !count) {
        return usage();
    }

    try {
        if (path == "scan" && (what == "digital" || what == "analog")) {
            axlbench::ScanRig rig(what == "digital" ? ModuleKind::Digital : ModuleKind::Analog,
                                  *side);
            const int publicationsBefore = rig.publications();
            axlMeasuredStart();
            rig.run(*count + 1);
            axlMeasuredEnd();
            if (rig.publications() != publicationsBefore) {
                std::fputs("axl_instructions: the scans were not steady\n", stderr);
                return 1;
            }
            return 0;
        }
        if (path == "event" && (what == "digital" || what == "analog" || what == "two-pins")) {
            const EventKind kind = what == "digital"  ? EventKind::Digital
                                   : what == "analog" ? EventKind::Analog
                                                      : EventKind::TwoPins;
            axlbench::EventRig rig(kind, *side);
            axlMeasuredStart();
            for (long i = 0; i < *count; ++i) {
                rig.deliver();
            }
            axlMeasuredEnd();
            return 0;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "axl_instructions: %s\n", error.what());
        return 1;
    }
    return usage();
}
