#pragma once

#include "vx/Api.h"
#include "vx/net/SocketAddress.h"
#include "vx/net/SocketResult.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>

struct addrinfo;

namespace vx {
class String;
}

namespace vx::net {

/// One IP address in the system's binary form. Operations do not throw: those that can fail return a result, and a
/// constructor writes it to `*status` (which may be null). Null pointers are VX_E_SOCKET_EINVAL. The caller that
/// creates an address deletes it. One thread at a time.
class VX_API InetAddress {
public:
    InetAddress(const InetAddress&) = default;
    InetAddress& operator=(const InetAddress&) = default;
    virtual ~InetAddress();

    /// 4 or 16 bytes.
    virtual ENUM_VX_E_SOCKET getAddressBinaryLength(unsigned int* length) const = 0;
    /// Copies the address in network order. `*length` is the size of `buffer` and becomes the number of bytes copied.
    /// If the buffer is too small it becomes the size needed, and the result is VX_E_SOCKET_EMSGSIZE.
    virtual ENUM_VX_E_SOCKET getAddressBinary(signed char* buffer, unsigned int* length) const = 0;
    /// The size of the system's form, which includes family and port.
    virtual ENUM_VX_E_SOCKET getStorageBinaryLength(unsigned int* length) const = 0;
    /// As `getAddressBinary` for the system's form.
    virtual ENUM_VX_E_SOCKET getStorageBinary(vx_sockaddr_union* buffer, unsigned int* length) const = 0;
    /// 1 or 0.
    virtual short isAddressAny() const = 0;
    virtual short isAddressLoopback() const = 0;
    virtual short isAddressNone() const = 0;
    /// Port and family are kept.
    virtual void setAddressAny() = 0;

    /// Creates an address of the family of `address`, which the caller deletes. A family other than IPv4 and IPv6 is
    /// VX_E_SOCKET_EINVAL, and `*out` becomes null.
    static ENUM_VX_E_SOCKET create(const vx_sockaddr_union* address, InetAddress** out);
    /// From one result of a name look-up, with `port` in host order.
    static ENUM_VX_E_SOCKET create(const addrinfo* info, unsigned short port, InetAddress** out);

    ENUM_VX_E_SOCKET getFamily(unsigned short* family) const;
    /// Appends the numeric text, or after a failure "native error " and its number. VX_E_SOCKET_EFAULT if memory is
    /// exhausted. No name service is used.
    ENUM_VX_E_SOCKET getAddressStr(String& text) const;

    /// By family, address and, for IPv6, scope. The port does not matter.
    friend bool operator==(const InetAddress& left, const InetAddress& right) noexcept
    {
        return left.compare(right) == 0;
    }
    friend std::strong_ordering operator<=>(const InetAddress& left, const InetAddress& right) noexcept
    {
        return left.compare(right) <=> 0;
    }
    /// Writes the numeric text.
    friend VX_API std::ostream& operator<<(std::ostream& stream, const InetAddress& address);

protected:
    InetAddress(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    InetAddress(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);

    vx_sockaddr_union m_address;

private:
    friend class InetSocketAddress;
    friend struct InetAddressHash;

    int compare(const InetAddress& other) const noexcept;

    /// As `getAddressStr`, but throws if memory is exhausted.
    ENUM_VX_E_SOCKET appendAddress(String& text) const;
};

/// An IPv4 address.
class VX_API Inet4Address : public InetAddress {
public:
    /// Null is allowed and makes an address of zeros without a family.
    Inet4Address(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    Inet4Address(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);
    ~Inet4Address() override;

    // InetAddress
    ENUM_VX_E_SOCKET getAddressBinaryLength(unsigned int* length) const override;
    ENUM_VX_E_SOCKET getAddressBinary(signed char* buffer, unsigned int* length) const override;
    ENUM_VX_E_SOCKET getStorageBinaryLength(unsigned int* length) const override;
    ENUM_VX_E_SOCKET getStorageBinary(vx_sockaddr_union* buffer, unsigned int* length) const override;
    short isAddressAny() const override;
    /// 127.0.0.1 only, not its whole network.
    short isAddressLoopback() const override;
    /// 255.255.255.255.
    short isAddressNone() const override;
    void setAddressAny() override;
};

/// An IPv6 address.
class VX_API Inet6Address : public InetAddress {
public:
    /// Null is allowed and makes an address of zeros without a family.
    Inet6Address(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    Inet6Address(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);
    ~Inet6Address() override;

    // InetAddress
    ENUM_VX_E_SOCKET getAddressBinaryLength(unsigned int* length) const override;
    ENUM_VX_E_SOCKET getAddressBinary(signed char* buffer, unsigned int* length) const override;
    ENUM_VX_E_SOCKET getStorageBinaryLength(unsigned int* length) const override;
    ENUM_VX_E_SOCKET getStorageBinary(vx_sockaddr_union* buffer, unsigned int* length) const override;
    short isAddressAny() const override;
    short isAddressLoopback() const override;
    /// Always 0.
    short isAddressNone() const override;
    void setAddressAny() override;
};

/// Of what `==` compares.
struct InetAddressHash {
    VX_API std::size_t operator()(const InetAddress& address) const noexcept;
};

} // namespace vx::net

template <std::derived_from<vx::net::InetAddress> Address>
struct std::hash<Address> : vx::net::InetAddressHash {
};
