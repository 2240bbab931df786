// SPDX-License-Identifier: MIT
#pragma once

#include "Arp/System/Core/Arp.h"
#include "Arp/System/Core/ArpSystemExport.h"

// Starts the Arp system module for the application with the settings file acfSettingsPath.
// Returns the process's application domain, or null when the runtime did not start.
ARP_SYSTEM_API Arp::AppDomain* ArpSystemModuleMain(const char* applicationName,
                                                   const char* acfSettingsPath);
