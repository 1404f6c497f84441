#pragma once

#include "vx/net/TcpSocket2.h"

#include <cstdint>

namespace vx::net::detail {

/// The result of a socket call of the platform layer, which gives 0 or the number of an error.
inline ENUM_VX_E_SOCKET resultOf(std::int32_t number)
{
    return number == 0 ? VX_E_SOCKET_OK : VX_E_SOCKETFromNativeSocketError(number);
}

/// The result of `call`, a socket call as above. It is not made without all its arguments, nor on a closed socket.
template <class Call>
ENUM_VX_E_SOCKET resultOnOpen(const TcpSocket2& socket, bool hasArguments, Call call)
{
    if (!hasArguments)
        return VX_E_SOCKET_EINVAL;
    return socket.getClosed() == 0 ? resultOf(call()) : VX_E_SOCKET_ENOTSOCK;
}

} // namespace vx::net::detail
