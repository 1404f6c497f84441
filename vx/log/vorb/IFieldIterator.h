#pragma once

#include "vx/IVXUnknown.h"
#include "vx/util/ICharBuffer.h"

#include <cstdint>

namespace vx::log::vorb {

/// Iterates over the names of an entry's fields.
class VX_API IFieldIterator : public IVXUnknown {
public:
    using InterfaceType = IFieldIterator;
    static constexpr _GUID IID {0x2F354F81, 0xAC82, 0x44A2, {0x9B, 0x24, 0xED, 0x2C, 0xED, 0x85, 0x71, 0x09}};

    /// 0 while there are more names, 1 at the end.
    virtual std::int32_t HasNext() = 0;
    /// Copies the next name into `out`.
    virtual std::int32_t Next(IVXCharBuffer* out) = 0;

protected:
    ~IFieldIterator() = default;
};

} // namespace vx::log::vorb
