#include "vx/net/SocketPoller.h"

#include "vx/net/TcpSocket2.h"

#include <algorithm>

namespace vx::net {

SocketPoller::SocketPoller(ENUM_VX_E_SOCKET* status)
{
    ENUM_VX_E_SOCKET result = TcpSocket2::init();
    if (result == VX_E_SOCKET_OK)
        result = VX_E_SOCKETFromNativeSocketError(VXPollerCreate(&m_handle));
    if (status != nullptr)
        *status = result;
}

SocketPoller::~SocketPoller()
{
    VXPollerDestroy(m_handle);
}

ENUM_VX_E_SOCKET SocketPoller::add(unsigned int socket, std::uint32_t interest, std::uint64_t id)
{
    if (socket == 0)
        return VX_E_SOCKET_ENOTSOCK;
    return VX_E_SOCKETFromNativeSocketError(VXPollerAdd(m_handle, socket, interest, id));
}

ENUM_VX_E_SOCKET SocketPoller::change(unsigned int socket, std::uint32_t interest, std::uint64_t id)
{
    if (socket == 0)
        return VX_E_SOCKET_ENOTSOCK;
    return VX_E_SOCKETFromNativeSocketError(VXPollerChange(m_handle, socket, interest, id));
}

ENUM_VX_E_SOCKET SocketPoller::remove(unsigned int socket)
{
    if (socket == 0)
        return VX_E_SOCKET_ENOTSOCK;
    return VX_E_SOCKETFromNativeSocketError(VXPollerRemove(m_handle, socket));
}

ENUM_VX_E_SOCKET SocketPoller::wait(std::span<Event> events, std::uint32_t milliseconds, std::size_t* count)
{
    if (count == nullptr)
        return VX_E_SOCKET_EINVAL;
    std::int32_t found = 0;
    const auto size = static_cast<std::int32_t>(std::min<std::size_t>(events.size(), INT32_MAX));
    const std::int32_t error = VXPollerWait(m_handle, events.data(), size, milliseconds, &found);
    *count = static_cast<std::size_t>(found);
    return VX_E_SOCKETFromNativeSocketError(error);
}

ENUM_VX_E_SOCKET SocketPoller::wake()
{
    return VX_E_SOCKETFromNativeSocketError(VXPollerWake(m_handle));
}

} // namespace vx::net
