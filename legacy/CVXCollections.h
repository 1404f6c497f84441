#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/IVXComparator.h"

/// Of the older generation; it has no instances.
class VX_API CVXCollections {
public:
    CVXCollections() = delete;

    /// The one that `vx::collections::GetDefaultComparator` gives.
    static CVXSmartPtr<IVXComparator> getDefaultComparator();
};
