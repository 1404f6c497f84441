#pragma once

#include "vx/Api.h"
#include "vx/net/SocketAddress.h"
#include "vx/net/SocketResult.h"

#include <cstdint>

struct addrinfo;

namespace vx {
class String;
}

namespace vx::net {

/// One IP address in the system's binary form. Nothing here throws: what can fail gives a result, and a constructor writes
/// it to `*status` (which may be null). Null pointers are VX_E_SOCKET_EINVAL. Owned by whoever created it; one thread at a
/// time.
class VX_API InetAddress {
public:
    InetAddress(const InetAddress&) = default;
    InetAddress& operator=(const InetAddress&) = default;
    virtual ~InetAddress();

    /// 4 or 16 bytes.
    virtual ENUM_VX_E_SOCKET getAddressBinaryLength(unsigned int* length) const = 0;
    /// Copies the address in network order. `*length` is the room in `buffer` and becomes what was copied; with too little
    /// room it becomes what is needed, and the result is VX_E_SOCKET_EMSGSIZE.
    virtual ENUM_VX_E_SOCKET getAddressBinary(signed char* buffer, unsigned int* length) const = 0;
    /// Bytes of the system's form, family and port included.
    virtual ENUM_VX_E_SOCKET getStorageBinaryLength(unsigned int* length) const = 0;
    /// As `getAddressBinary` for the system's form.
    virtual ENUM_VX_E_SOCKET getStorageBinary(vx_sockaddr_union* buffer, unsigned int* length) const = 0;
    /// 1 or 0.
    virtual short isAddressAny() const = 0;
    virtual short isAddressLoopback() const = 0;
    virtual short isAddressNone() const = 0;
    /// The port and the family stay.
    virtual void setAddressAny() = 0;

    /// An address of the family of `address`, for the caller to delete. A family other than the two of the Internet is
    /// VX_E_SOCKET_EINVAL, and `*out` null.
    static ENUM_VX_E_SOCKET create(const vx_sockaddr_union* address, InetAddress** out);
    /// From one entry of a look-up, with `port` in host order.
    static ENUM_VX_E_SOCKET create(const addrinfo* info, unsigned short port, InetAddress** out);

    ENUM_VX_E_SOCKET getFamily(unsigned short* family) const;
    /// Appends the numeric text, after a failure "native error " and its number; VX_E_SOCKET_EFAULT where memory is short.
    /// No name service is asked.
    ENUM_VX_E_SOCKET getAddressStr(String& text) const;

protected:
    InetAddress(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    InetAddress(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);

    vx_sockaddr_union m_address;

private:
    friend class InetSocketAddress;

    /// As `getAddressStr`, but a lack of memory is thrown.
    ENUM_VX_E_SOCKET appendAddress(String& text) const;
};

/// An IPv4 address.
class VX_API Inet4Address : public InetAddress {
public:
    /// Null is no failure and gives an address of zeros without a family.
    Inet4Address(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    Inet4Address(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);
    ~Inet4Address() override;

    // InetAddress
    ENUM_VX_E_SOCKET getAddressBinaryLength(unsigned int* length) const override;
    ENUM_VX_E_SOCKET getAddressBinary(signed char* buffer, unsigned int* length) const override;
    ENUM_VX_E_SOCKET getStorageBinaryLength(unsigned int* length) const override;
    ENUM_VX_E_SOCKET getStorageBinary(vx_sockaddr_union* buffer, unsigned int* length) const override;
    short isAddressAny() const override;
    /// 127.0.0.1 alone, not its whole network.
    short isAddressLoopback() const override;
    /// 255.255.255.255.
    short isAddressNone() const override;
    void setAddressAny() override;
};

/// An IPv6 address.
class VX_API Inet6Address : public InetAddress {
public:
    /// Null is no failure and gives an address of zeros without a family.
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

} // namespace vx::net
