// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "HostRecords.h"
#include "vplc/Module.h"

namespace fuzz {

// The records of one driver and the bus it runs on, read from a fuzzer's input. Every input is a
// configuration. The input is text, one line per item; the first character of a line says what
// the rest of it sets:
//
//   T<text>              the device type (sDeviceType)
//   N<text>              the service name (sServiceName)
//   X<text>              the driver's name (sName)
//   P<key>=<value>       a driver parameter, such as "PConsecutive Number=1"
//   M<id>,<size>         a mapping element: event id and nDataSize
//   S<key>,<id>,<text>   a service: its key in the service table, its event id, its service text
//   K<key>=<value>       a parameter of the service of the last S line
//   B<modules>           the bus, one letter per position: D the digital, A the analog module
//   F<call>,<count>      the next 1 to 3 calls of one of kFaultableCalls (picked by <call>) fail
//
// Texts are taken byte for byte; "\n" stands for a line break and "\\" for a backslash. Numbers
// are the leading decimal digits, wrapped to the field's width. Other lines are ignored.
struct ConfigurationText {
    static constexpr std::size_t kMaxServices = 32;
    static constexpr std::size_t kMaxMappings = 64;
    static constexpr std::size_t kMaxModules = 8;

    // The platform calls an F line can make fail.
    static constexpr std::array<const char*, 9> kFaultableCalls = {
        "ArpPlcIo_GetBufferPtrByBufferID",
        "ArpPlcIo_ReleaseGdsBuffer",
        "ArpPlcGds_GetVariableOffset",
        "ArpPlcGds_BeginRead",
        "ArpPlcGds_EndRead",
        "ArpPlcGds_BeginWrite",
        "ArpPlcGds_EndWrite",
        "ArpPlcAxio_ReadFromAxioToGds",
        "ArpPlcAxio_WriteFromGdsToAxio"};

    struct Fault {
        const char* call;
        int count;
    };

    static ConfigurationText parse(std::span<const uint8_t> input);

    stSP_Params_t params;
    std::map<unsigned, stMappingElem_t> mappings;
    std::map<unsigned, stServiceParams_t> services;
    std::vector<vplc::Module> bus;  // the digital and the analog module when the input names none
    std::vector<Fault> faults;      // at most one per call; a later F line for a call replaces it
};

}  // namespace fuzz
