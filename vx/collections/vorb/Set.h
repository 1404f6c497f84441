#pragma once

#include "vx/collections/vorb/Collection.h"

namespace vx::collections::vorb {

/// A collection without two equal elements.
class VX_API Set : public virtual Collection {
protected:
    ~Set() = default;
};

} // namespace vx::collections::vorb
