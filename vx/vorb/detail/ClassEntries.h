#pragma once

#include "vxsys/Guid.h"

#include <functional>

namespace vx::vorb::detail {

/// What the registry holds about a class. `generalProgId` gives the name without a version; it is called last.
struct ClassEntries {
    const _GUID& classId;
    const char16_t* progId;
    std::function<const char16_t*()> generalProgId;

    /// Each throws Exception.
    void set(const char16_t* words) const;
    void setLibrary(const char16_t* path) const;
    void remove() const;
};

} // namespace vx::vorb::detail
