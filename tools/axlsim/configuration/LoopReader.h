// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>
#include <vector>

#include "axlsim/configuration/ConfigDocument.h"
#include "axlsim/configuration/LoopConfig.h"
#include "vplc/Module.h"

namespace axlsim::loopreader {

// Reads the "plant" and "host" sections of a configuration. Pins are judged against the bus: a
// name that the module at its position does not have, or a pin of the wrong kind for its role,
// is a ConfigError at its JSON pointer. Whether the routes fit the drivers' services is
// loopcheck's to say.

std::vector<PlantModel> readPlant(const Document& doc, const Json& node,
                                  const std::vector<vplc::Module>& bus);
std::vector<Route> readHost(const Document& doc, const Json& node, int drivers);

// Every key the two sections know.
std::vector<std::string_view> keys();

}  // namespace axlsim::loopreader
