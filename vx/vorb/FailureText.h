#pragma once

#include "vx/IVXUnknown.h"
#include "vx/util/ICharBuffer.h"

#include <cstdint>

namespace vx::vorb {

/// The words for failures of a component, whose operations return only result codes.
class VX_API IVXFailureText : public IVXUnknown {
public:
    using InterfaceType = IVXFailureText;
    static constexpr _GUID IID {0x70C08156, 0x072E, 0x433F, {0x99, 0x24, 0x28, 0xF6, 0x38, 0x5F, 0x0E, 0x5A}};

    /// Stores what is known about the last failed operation of this object. Call it on the thread of that operation,
    /// before any other call. The text is on one line and in English; it is empty if nothing is known.
    virtual std::int32_t GetFailureText(IVXCharBuffer* text) = 0;

protected:
    ~IVXFailureText() = default;
};

/// Throws a negative `result` of an operation of `component` as ResultException. Its description is the component's
/// text of the failure; it is empty if the component has no `IVXFailureText`.
VX_API void throwIfFailedIn(IVXUnknown& component, std::int32_t result);

} // namespace vx::vorb
