#include "vx/net/TcpClientSocket2.h"

#include "vx/net/detail/NativeResult.h"
#include "vxsys/Socket.h"

#include <new>

namespace vx::net {

using namespace detail;

TcpClientSocket2::TcpClientSocket2(unsigned int id, ENUM_VX_E_SOCKET* status)
    : TcpWorkerSocket2(id, status)
{
}

TcpClientSocket2::~TcpClientSocket2() = default;

ENUM_VX_E_SOCKET TcpClientSocket2::createTcpClientSocket2(int domain, int type, int protocol, TcpClientSocket2** out)
{
    if (out == nullptr)
        return VX_E_SOCKET_EINVAL;
    *out = nullptr;
    ENUM_VX_E_SOCKET status = init();
    if (status != VX_E_SOCKET_OK)
        return status;
    unsigned int handle = VX_SOCKET_INVALID;
    if (const std::int32_t error = VXSocketOpen(domain, type, protocol, &handle); error != 0)
        return resultOf(error);
    *out = new (std::nothrow) TcpClientSocket2(handle, &status);
    if (*out != nullptr)
        return status;
    VXSocketClose(handle);
    return VX_E_SOCKET_EFAULT;
}

ENUM_VX_E_SOCKET TcpClientSocket2::bind(const vx_sockaddr_union* address, unsigned int length)
{
    return resultOnOpen(
        *this, address != nullptr, [&] { return VXSocketBind(getHandle(), &address->generic, length); });
}

ENUM_VX_E_SOCKET TcpClientSocket2::connect(const vx_sockaddr_union* address, unsigned int length)
{
    return resultOnOpen(
        *this, address != nullptr, [&] { return VXSocketConnect(getHandle(), &address->generic, length); });
}

ENUM_VX_E_SOCKET TcpClientSocket2::connectFor(
    const vx_sockaddr_union* address, unsigned int length, std::uint32_t milliseconds)
{
    return resultOnOpen(*this, address != nullptr,
        [&] { return VXSocketTimedConnect(getHandle(), &address->generic, length, milliseconds); });
}

ENUM_VX_E_SOCKET TcpClientSocket2::getLocalAddress(vx_sockaddr_union* address, int* length)
{
    return resultOnOpen(*this, address != nullptr && length != nullptr && *length >= 0, [&] {
        auto size = static_cast<std::uint32_t>(*length);
        const std::int32_t error = VXSocketGetAddress(getHandle(), &address->generic, &size);
        *length = static_cast<int>(size);
        return error;
    });
}

} // namespace vx::net
