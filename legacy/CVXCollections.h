#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/IVXComparator.h"

/// A class of the older generation without instances.
class VX_API CVXCollections {
public:
    CVXCollections() = delete;

    /// Returns what `vx::collections::GetDefaultComparator` returns.
    static CVXSmartPtr<IVXComparator> getDefaultComparator();
};
