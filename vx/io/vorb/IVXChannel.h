#pragma once

#include "vx/util/ICharBuffer.h"

namespace vx::io::vorb {

/// A connection for component code.
class VX_API IVXChannel : public IVXUnknown {
public:
    using InterfaceType = IVXChannel;
    static constexpr _GUID IID {0xD2B1BFAE, 0xEC92, 0x4F2F, {0x9D, 0xEC, 0x4D, 0x98, 0xEA, 0x94, 0x59, 0x8C}};

    /// `*length` is the size of the buffer and becomes the number of bytes read, -1 at the end.
    virtual std::int32_t Read(signed char* bytes, std::int32_t* length) = 0;
    /// `*length` is the number of bytes and becomes the number written.
    virtual std::int32_t Write(const signed char* bytes, std::int32_t* length) = 0;
    /// Stores in the buffer the text by which another process can inherit the channel. RESULT_NOT_AVAILABLE if it has
    /// none.
    virtual std::int32_t GetInheritanceId(IVXCharBuffer* out) = 0;

protected:
    ~IVXChannel() = default;
};

} // namespace vx::io::vorb
