#pragma once

/// The storage of a socket address, for C and C++.

#include <netinet/in.h>
#include <sys/socket.h>

/// Holds any socket address of the system in 128 bytes: the family in front, behind it, for the two families of the
/// Internet, the port in network byte order.
union vx_sockaddr_union {
    struct sockaddr generic;
    struct sockaddr_in in4;
    struct sockaddr_in6 in6;
    unsigned char storage[128];
};

#ifndef __cplusplus
typedef union vx_sockaddr_union vx_sockaddr_union;
#endif
