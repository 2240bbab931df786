// SPDX-License-Identifier: MIT
#pragma once

namespace vplc {

// The two GDS frame buffers of the Axioline master: "1:IN" holds the process data the modules
// deliver, "1:OUT" the process data they are given.
enum class Frame { In, Out };

}  // namespace vplc
