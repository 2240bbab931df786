// SPDX-License-Identifier: MIT
#include "Scenario.h"

namespace faultmatrix {

Publications Scenario::takePublished() {
    Publications since;
    const auto all = rig_.recorder().published();
    for (std::size_t i = taken_; i < all.size(); ++i) {
        since.emplace_back(all[i].id, all[i].bytes);
    }
    taken_ = all.size();
    return since;
}

}  // namespace faultmatrix
