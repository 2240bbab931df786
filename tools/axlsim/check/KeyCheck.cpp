// SPDX-License-Identifier: MIT
#include "axlsim/check/KeyCheck.h"

#include <algorithm>

#include "axlsim/base/ValueText.h"
#include "axlsim/check/Spelling.h"

namespace axlsim::configcheck {

void checkKeys(DriverCheck& check, std::optional<unsigned> key, const std::string& where,
               const std::map<std::string, std::string>& params,
               const std::vector<std::string_view>& known, const std::string& kind) {
    for (const auto& [name, value] : params) {
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            continue;
        }
        const std::string nearest = nearestKey(name, known);
        std::string reads = "it reads none";
        for (std::size_t i = 0; i < known.size(); ++i) {
            reads = (i == 0 ? "it reads " : reads + " and ") + std::string(known[i]);
        }
        // Renaming into a key that is there already would make a key given twice.
        const bool given = !nearest.empty() && params.count(nearest) != 0;
        std::string problem = shortText(name) + ": not a key the driver reads";
        if (nearest.empty()) {
            problem += (kind.empty() ? "" : " for a " + kind + " service") + " (" + reads + ")";
        } else if (given) {
            problem += "; " + nearest + ", which it reads, is given already";
        } else {
            problem += "; did you mean " + nearest + "?";
        }
        Finding& finding = check.add(Effect::Differs, key, where, problem);
        finding.consequence = "never reads it, so it has no effect";
        finding.fix = nearest.empty() || given ? "remove it" : "rename it to " + nearest;
    }
}

}  // namespace axlsim::configcheck
