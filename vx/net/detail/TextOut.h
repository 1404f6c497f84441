#pragma once

#include "vx/String.h"
#include "vx/net/SocketResult.h"

#include <concepts>
#include <utility>

namespace vx::net::detail {

/// Builds a text by `fill(String&)` and writes it to the buffer of a caller, in the default encoding. `*length` is the
/// size of the buffer in bytes and becomes the number of bytes written. VX_E_SOCKET_EFAULT and an empty text if there
/// is no room, otherwise the result of `fill`. Nothing is thrown.
template <std::unsigned_integral Length, class Fill>
ENUM_VX_E_SOCKET writeText(char* text, Length* length, Fill fill) noexcept
{
    const Length room = length != nullptr ? std::exchange(*length, Length {0}) : 0;
    if (text == nullptr)
        return VX_E_SOCKET_EINVAL;
    *text = '\0'; // always, even for a size of 0
    if (length == nullptr)
        return VX_E_SOCKET_EINVAL;
    if (room == 0)
        return VX_E_SOCKET_EFAULT;
    try {
        String built;
        const ENUM_VX_E_SOCKET result = fill(built);
        if (static_cast<Length>(built.getLength()) > room - 1)
            return VX_E_SOCKET_EFAULT;
        const int size = room > INT32_MAX ? INT32_MAX : static_cast<int>(room);
        *length = static_cast<Length>(built.getBytes(text, size));
        return result;
    } catch (...) {
        *text = '\0';
        return VX_E_SOCKET_EFAULT;
    }
}

} // namespace vx::net::detail
