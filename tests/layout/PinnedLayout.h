// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <vector>

namespace layouttest {

// The size of a record and the offsets of its fields, in the order the host contract lists them.
struct RecordLayout {
    std::size_t size = 0;
    std::vector<std::ptrdiff_t> offsets;
};

// The binary layout of the host contract on one target ABI. A host built by another compiler for
// the same target lays its objects out exactly so, and the driver must agree byte for byte.
struct PinnedLayout {
    const char* abi = "";
    RecordLayout tagElem;
    RecordLayout appBlocInfo;
    RecordLayout mappingElem;
    RecordLayout serviceParams;
    RecordLayout spParams;
    RecordLayout eventParams;
    // CSI_base: its size, and the offsets of m_mapMappings, m_mapServices, m_spParams and
    // m_bStopped behind the virtual table pointer.
    RecordLayout hostBase;
    // CPosixThread: its size; it holds no member the driver touches.
    RecordLayout threadBase;
};

// The layout pinned for the ABI this program is built for, or null on a target nobody has pinned
// yet.
const PinnedLayout* pinnedLayout();

}  // namespace layouttest
