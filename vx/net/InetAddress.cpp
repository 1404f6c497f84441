#include "vx/net/InetAddress.h"

#include "vx/String.h"
#include "vx/net/TcpSocket2.h"
#include "vxsys/Net.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstddef>
#include <cstring>
#include <netdb.h>
#include <new>
#include <ostream>
#include <string_view>

namespace vx::net {

namespace {

constexpr std::size_t HOST_SIZE = 1025;

static_assert(sizeof(in_addr) == 4 && sizeof(in6_addr) == 16);
static_assert(sizeof(sockaddr_in) == 16 && sizeof(sockaddr_in6) == 28 && sizeof(vx_sockaddr_union) == 128);
static_assert(offsetof(sockaddr_in, sin_port) == offsetof(sockaddr_in6, sin6_port), "one place for the port");

/// The size of the system's form for a family, 0 for an unknown family.
constexpr std::size_t storageLengthOf(int family) noexcept
{
    return family == AF_INET ? sizeof(sockaddr_in) : family == AF_INET6 ? sizeof(sockaddr_in6) : 0;
}

ENUM_VX_E_SOCKET storeLength(unsigned int wanted, unsigned int* length) noexcept
{
    if (length == nullptr)
        return VX_E_SOCKET_EINVAL;
    *length = wanted;
    return VX_E_SOCKET_OK;
}

ENUM_VX_E_SOCKET copyOut(const void* source, unsigned int size, void* target, unsigned int* length) noexcept
{
    if (target == nullptr || length == nullptr)
        return VX_E_SOCKET_EINVAL;
    const bool fits = *length >= size;
    *length = size;
    if (!fits)
        return VX_E_SOCKET_EMSGSIZE;
    std::memcpy(target, source, size);
    return VX_E_SOCKET_OK;
}

int familyOf(const vx_sockaddr_union& address) noexcept
{
    return address.generic.sa_family;
}

int familyOf(const addrinfo& info) noexcept
{
    return info.ai_family;
}

/// Both forms of `InetAddress::create`. `source` and `arguments` are passed to the constructor.
template <class Source, class... Arguments>
ENUM_VX_E_SOCKET createFrom(InetAddress** out, const Source* source, Arguments... arguments) noexcept
{
    if (out != nullptr)
        *out = nullptr;
    if (out == nullptr || source == nullptr)
        return VX_E_SOCKET_EINVAL;
    ENUM_VX_E_SOCKET status = TcpSocket2::init();
    if (status != VX_E_SOCKET_OK)
        return status;
    const int family = familyOf(*source);
    InetAddress* address = nullptr;
    if (family == AF_INET)
        address = new (std::nothrow) Inet4Address(source, arguments..., &status);
    else if (family == AF_INET6)
        address = new (std::nothrow) Inet6Address(source, arguments..., &status);
    else
        return VX_E_SOCKET_EINVAL;
    if (address == nullptr)
        return VX_E_SOCKET_ENOBUFS;
    *out = address;
    return status;
}

void appendNativeError(String& text, int number)
{
    text.append(u"native error ");
    text.append(String::valueOf(number));
}

} // namespace

InetAddress::InetAddress(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status)
    : m_address {}
{
    ENUM_VX_E_SOCKET result = TcpSocket2::init();
    if (result == VX_E_SOCKET_OK && address != nullptr) {
        const std::size_t length = storageLengthOf(address->generic.sa_family);
        if (length == 0)
            result = VX_E_SOCKET_EINVAL;
        std::memcpy(&m_address, address, length);
    }
    if (status != nullptr)
        *status = result;
}

InetAddress::InetAddress(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status)
    : InetAddress(nullptr, status)
{
    if (info == nullptr)
        return;
    if (info->ai_addr != nullptr)
        std::memcpy(&m_address, info->ai_addr, std::min<std::size_t>(info->ai_addrlen, sizeof m_address));
    m_address.in4.sin_port = htons(port);
}

InetAddress::~InetAddress() = default;

ENUM_VX_E_SOCKET InetAddress::create(const vx_sockaddr_union* address, InetAddress** out)
{
    return createFrom(out, address);
}

ENUM_VX_E_SOCKET InetAddress::create(const addrinfo* info, unsigned short port, InetAddress** out)
{
    return createFrom(out, info, port);
}

ENUM_VX_E_SOCKET InetAddress::getFamily(unsigned short* family) const
{
    if (family == nullptr)
        return VX_E_SOCKET_EINVAL;
    *family = m_address.generic.sa_family;
    return VX_E_SOCKET_OK;
}

ENUM_VX_E_SOCKET InetAddress::getAddressStr(String& text) const
{
    try {
        return appendAddress(text);
    } catch (...) {
        return VX_E_SOCKET_EFAULT;
    }
}

int InetAddress::compare(const InetAddress& other) const noexcept
{
    const int family = m_address.generic.sa_family;
    if (family != other.m_address.generic.sa_family)
        return family - other.m_address.generic.sa_family;
    if (family == AF_INET)
        return std::memcmp(&m_address.in4.sin_addr, &other.m_address.in4.sin_addr, sizeof(in_addr));
    if (family != AF_INET6)
        return 0;
    const int order = std::memcmp(&m_address.in6.sin6_addr, &other.m_address.in6.sin6_addr, sizeof(in6_addr));
    const std::uint32_t scope = m_address.in6.sin6_scope_id, otherScope = other.m_address.in6.sin6_scope_id;
    return order != 0 ? order : (scope > otherScope) - (scope < otherScope);
}

std::size_t InetAddressHash::operator()(const InetAddress& address) const noexcept
{
    const vx_sockaddr_union& bytes = address.m_address;
    switch (bytes.generic.sa_family) {
    case AF_INET:
        return std::hash<std::uint32_t>()(bytes.in4.sin_addr.s_addr);
    case AF_INET6:
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(&bytes.in6.sin6_addr), sizeof(in6_addr)});
    default:
        return 0;
    }
}

std::ostream& operator<<(std::ostream& stream, const InetAddress& address)
{
    String text;
    address.appendAddress(text);
    return stream << text;
}

ENUM_VX_E_SOCKET InetAddress::appendAddress(String& text) const
{
    unsigned int length = 0;
    const ENUM_VX_E_SOCKET result = getStorageBinaryLength(&length);
    if (result != VX_E_SOCKET_OK) {
        appendNativeError(text, result);
        return result;
    }
    char host[HOST_SIZE];
    const int error = VXgetnumericname(&m_address.generic, length, host, sizeof host);
    if (error != 0) {
        appendNativeError(text, error);
        return VX_E_SOCKETFromNativeEaiSocketError(error);
    }
    text.append(String(host));
    return VX_E_SOCKET_OK;
}

// What the two classes do in the same way, each with its member of `vx_sockaddr_union` and the address in it.
#define VX_INET_ADDRESS(Class, storage, binary)                                                                        \
    Class::Class(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status)                                           \
        : InetAddress(address, status)                                                                                 \
    {                                                                                                                  \
    }                                                                                                                  \
                                                                                                                       \
    Class::Class(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status)                                  \
        : InetAddress(info, port, status)                                                                              \
    {                                                                                                                  \
    }                                                                                                                  \
                                                                                                                       \
    Class::~Class() = default;                                                                                         \
                                                                                                                       \
    ENUM_VX_E_SOCKET Class::getAddressBinaryLength(unsigned int* length) const                                         \
    {                                                                                                                  \
        return storeLength(sizeof m_address.storage.binary, length);                                                   \
    }                                                                                                                  \
                                                                                                                       \
    ENUM_VX_E_SOCKET Class::getAddressBinary(signed char* buffer, unsigned int* length) const                          \
    {                                                                                                                  \
        return copyOut(&m_address.storage.binary, sizeof m_address.storage.binary, buffer, length);                    \
    }                                                                                                                  \
                                                                                                                       \
    ENUM_VX_E_SOCKET Class::getStorageBinaryLength(unsigned int* length) const                                         \
    {                                                                                                                  \
        return storeLength(sizeof m_address.storage, length);                                                          \
    }                                                                                                                  \
                                                                                                                       \
    ENUM_VX_E_SOCKET Class::getStorageBinary(vx_sockaddr_union* buffer, unsigned int* length) const                    \
    {                                                                                                                  \
        return copyOut(&m_address, sizeof m_address.storage, buffer, length);                                          \
    }

VX_INET_ADDRESS(Inet4Address, in4, sin_addr)
VX_INET_ADDRESS(Inet6Address, in6, sin6_addr)

short Inet4Address::isAddressAny() const
{
    return m_address.in4.sin_addr.s_addr == htonl(INADDR_ANY);
}

short Inet4Address::isAddressLoopback() const
{
    return m_address.in4.sin_addr.s_addr == htonl(INADDR_LOOPBACK);
}

short Inet4Address::isAddressNone() const
{
    return m_address.in4.sin_addr.s_addr == htonl(INADDR_NONE);
}

void Inet4Address::setAddressAny()
{
    m_address.in4.sin_addr.s_addr = htonl(INADDR_ANY);
}

short Inet6Address::isAddressAny() const
{
    return IN6_IS_ADDR_UNSPECIFIED(&m_address.in6.sin6_addr) ? 1 : 0;
}

short Inet6Address::isAddressLoopback() const
{
    return IN6_IS_ADDR_LOOPBACK(&m_address.in6.sin6_addr) ? 1 : 0;
}

short Inet6Address::isAddressNone() const
{
    return 0;
}

void Inet6Address::setAddressAny()
{
    m_address.in6.sin6_addr = in6addr_any;
}

} // namespace vx::net
