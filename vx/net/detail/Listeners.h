#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/net/SocketAddress.h"
#include "vx/net/TcpSocketHandle.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vx::net::detail {

/// "192.0.2.1:80" or "[::1]:80".
String textOf(const vx_sockaddr_union& address);
/// "example.org:80" or "[::1]:80".
String textOf(const String& host, std::uint16_t port);

/// Sockets that listen without blocking, all on one port.
struct Listeners {
    std::vector<Reference<TcpSocketHandle>> sockets;
    std::vector<String> addresses;
    std::uint16_t port = 0;
};

/// Throws ResultException with the address and the reason if one cannot be used, or if there is none. Leaves out an
/// address whose family the machine does not have.
Listeners listenOn(const std::vector<std::string>& hosts, std::uint16_t port);

} // namespace vx::net::detail
