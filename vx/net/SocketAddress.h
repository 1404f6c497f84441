#pragma once

/// The storage of a socket address, for C and C++.

#include <netinet/in.h>
#include <sys/socket.h>

/// Any socket address of the system in 128 bytes. It begins with the family, which for IPv4 and IPv6 is followed by the
/// port in network byte order.
union vx_sockaddr_union {
    struct sockaddr generic;
    struct sockaddr_in in4;
    struct sockaddr_in6 in6;
    unsigned char storage[128];
};

#ifndef __cplusplus
typedef union vx_sockaddr_union vx_sockaddr_union;
#endif
