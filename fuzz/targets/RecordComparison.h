// SPDX-License-Identifier: MIT
#pragma once

#include <map>

#include "HostRecords.h"

namespace fuzz {

// Field-by-field equality of the host's records, which declare no comparison of their own.
bool sameRecords(const stSP_Params_t& a, const stSP_Params_t& b);
bool sameRecords(const std::map<unsigned, stMappingElem_t>& a,
                 const std::map<unsigned, stMappingElem_t>& b);
bool sameRecords(const std::map<unsigned, stServiceParams_t>& a,
                 const std::map<unsigned, stServiceParams_t>& b);

}  // namespace fuzz
