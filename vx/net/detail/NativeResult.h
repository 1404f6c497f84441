#pragma once

#include "vx/net/SocketResult.h"

#include <cstdint>

namespace vx::net::detail {

/// The result of a socket call of the platform layer, which gives 0 or the number of an error.
inline ENUM_VX_E_SOCKET resultOf(std::int32_t number)
{
    return number == 0 ? VX_E_SOCKET_OK : VX_E_SOCKETFromNativeSocketError(number);
}

} // namespace vx::net::detail
