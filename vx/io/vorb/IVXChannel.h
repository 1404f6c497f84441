#pragma once

#include "vx/util/ICharBuffer.h"

namespace vx::io::vorb {

/// A connection to component code.
class VX_API IVXChannel : public IVXUnknown {
public:
    using InterfaceType = IVXChannel;
    static constexpr _GUID IID {0xD2B1BFAE, 0xEC92, 0x4F2F, {0x9D, 0xEC, 0x4D, 0x98, 0xEA, 0x94, 0x59, 0x8C}};

    /// `*length` is the room and becomes the number of bytes read, -1 at the end.
    virtual std::int32_t Read(signed char* bytes, std::int32_t* length) = 0;
    /// `*length` is the number of bytes and becomes the number written.
    virtual std::int32_t Write(const signed char* bytes, std::int32_t* length) = 0;
    /// Puts the text that names the channel to another process into the buffer. RESULT_NOT_AVAILABLE where it has none.
    virtual std::int32_t GetInheritanceId(IVXCharBuffer* out) = 0;

protected:
    ~IVXChannel() = default;
};

} // namespace vx::io::vorb
