#pragma once

#include "vx/IVXComparator.h"
#include "vx/Reference.h"

namespace vx::collections {

/// The comparator of every collection that is given none: one `vx::util::Comparator` for the whole process, created by
/// the first call.
VX_API Reference<IVXComparator> GetDefaultComparator();

} // namespace vx::collections
