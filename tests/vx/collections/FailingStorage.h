#pragma once

#include <cstddef>
#include <vector>

// Linked into a test, these stand in for the allocation of the platform layer.

namespace vx::collections {

/// While true, nothing is to be had.
extern bool g_storageFails;
/// Where the sizes of arrays that grow are noted; null for nowhere.
extern std::vector<std::size_t>* g_sizesAsked;

} // namespace vx::collections
