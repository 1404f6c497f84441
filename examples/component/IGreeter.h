#pragma once

#include "vx/IVXUnknown.h"
#include "vx/util/ICharBuffer.h"

/// What a greeter does for programs that know nothing else of it.
class IGreeter : public IVXUnknown {
public:
    using InterfaceType = IGreeter;
    static constexpr _GUID IID {0x5DCE0B41, 0x3E1C, 0x4E02, {0x9A, 0x55, 0x0E, 0x8B, 0x27, 0x61, 0xC4, 0x10}};

    /// Puts the greeting for `name`, without a terminator, into the caller's buffer.
    virtual std::int32_t Greet(const char16_t* name, IVXCharBuffer* text) = 0;

protected:
    ~IGreeter() = default;
};
