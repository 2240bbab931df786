// SPDX-License-Identifier: MIT
#pragma once

#include <map>

#include "HostExport.h"
#include "HostRecords.h"

class CSI_base;

// The entry point every driver library exports: a new driver made from copies of the host's
// records. A host that links the driver calls it by name; one that loads the library looks up
// kDriverFactorySymbol and calls it through a DriverFactory.
extern "C" ORBEL_API CSI_base* CreateSiObject(stSP_Params_t params,
                                              std::map<unsigned, stMappingElem_t>* mappings,
                                              std::map<unsigned, stServiceParams_t>* services);

using DriverFactory = decltype(&CreateSiObject);

inline constexpr const char* kDriverFactorySymbol = "CreateSiObject";
