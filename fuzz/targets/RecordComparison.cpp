// SPDX-License-Identifier: MIT
#include "RecordComparison.h"

#include <algorithm>

namespace fuzz {

namespace {

bool sameTag(const stTagElem_t& a, const stTagElem_t& b) {
    return a.nHostWord == b.nHostWord && a.sHostText1 == b.sHostText1 &&
           a.sHostText2 == b.sHostText2 && a.sHostText3 == b.sHostText3;
}

bool sameMapping(const stMappingElem_t& a, const stMappingElem_t& b) {
    return a.nDataSize == b.nDataSize && a.sHostText1 == b.sHostText1 &&
           a.sHostText2 == b.sHostText2 &&
           std::equal(a.vecTags.begin(), a.vecTags.end(), b.vecTags.begin(), b.vecTags.end(),
                      sameTag);
}

bool sameService(const stServiceParams_t& a, const stServiceParams_t& b) {
    return a.byHost1 == b.byHost1 && a.byHost2 == b.byHost2 && a.nEventId == b.nEventId &&
           a.sName == b.sName && a.sServiceType == b.sServiceType && a.mapParams == b.mapParams;
}

template <class Map, class Same>
bool sameMap(const Map& a, const Map& b, Same same) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](const auto& x, const auto& y) {
        return x.first == y.first && same(x.second, y.second);
    });
}

}  // namespace

bool sameRecords(const stSP_Params_t& a, const stSP_Params_t& b) {
    return a.sName == b.sName && a.sServiceName == b.sServiceName &&
           a.sDeviceType == b.sDeviceType && a.mapParams == b.mapParams;
}

bool sameRecords(const std::map<unsigned, stMappingElem_t>& a,
                 const std::map<unsigned, stMappingElem_t>& b) {
    return sameMap(a, b, sameMapping);
}

bool sameRecords(const std::map<unsigned, stServiceParams_t>& a,
                 const std::map<unsigned, stServiceParams_t>& b) {
    return sameMap(a, b, sameService);
}

}  // namespace fuzz
