#pragma once

/// Sockets and addresses without class definitions, for C and C++. The functions return the results of the classes that
/// they use, and never throw. If a pointer that must not be null is null, the result is VX_E_SOCKET_EINVAL and nothing
/// else happens.
///
/// A client: `VxNetTcpClientSocketStaticCreate`, perhaps `...Bind`, `...Connect`, then `...Send`, `...Recv` and
/// `...StaticSelect` in any order, `VxNetTcpSocketShutdownOutput`, `VxNetTcpSocketClose`, `VxNetTcpSocketStaticDestroy`.
///
/// A server: `VxNetTcpServerSocketStaticCreate`, `...BindListAdd...` once or more, perhaps
/// `...BindListSaveOneForNamedPipeReply`, then `...Bind`, `...Listen`, `...SaveBoundAddresses`, `...Accept` or
/// `...AcceptSocket` in a loop, `VxNetTcpSocketClose`, `VxNetTcpSocketStaticDestroy`.

#include "vx/Api.h"
#include "vx/net/SocketAddress.h"
#include "vx/net/SocketResult.h"

#include <stdint.h>

struct addrinfo;
struct timeval;

#ifdef __cplusplus
namespace vx::net {
class TcpSocket2;
class TcpWorkerSocket2;
class TcpClientSocket2;
class TcpServerSocket2;
} // namespace vx::net

/// Any socket, a connected one (worker), one that its owner connects (client), and one that listens (server). A client
/// is also a worker, and all are sockets. C code converts the pointers by a cast.
typedef vx::net::TcpSocket2 VxNetTcpSocket;
typedef vx::net::TcpWorkerSocket2 VxNetTcpWorkerSocket;
typedef vx::net::TcpClientSocket2 VxNetTcpClientSocket;
typedef vx::net::TcpServerSocket2 VxNetTcpServerSocket;

extern "C" {
#else
typedef struct VxNetTcpSocket VxNetTcpSocket;
typedef struct VxNetTcpWorkerSocket VxNetTcpWorkerSocket;
typedef struct VxNetTcpClientSocket VxNetTcpClientSocket;
typedef struct VxNetTcpServerSocket VxNetTcpServerSocket;
#endif

/// Starts the sockets layer. Every other function does so too if needed.
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketStaticInit(void);
/// Does nothing and succeeds: the library cleans up when it stops.
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketStaticUninit(void);
/// The version of the sockets interface.
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketStaticGetVersion(int32_t* major, int32_t* minor);
/// Looks `host` up and returns result `index` with `port` in host order. VX_E_SOCKET_EADDRNOTAVAIL after the last one.
/// `hints` may be null.
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketStaticGetaddrinfo(
    const char* host, unsigned short port, struct addrinfo* hints, uint32_t index, union vx_sockaddr_union* result);
/// Shuts the output down, closes and deletes the socket, and sets the pointer to null. It may be null already.
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketStaticDestroy(VxNetTcpSocket** socket);
/// The object stays valid. It is closed even if the result is a failure.
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketClose(VxNetTcpSocket* socket);
/// The native socket, or for a server a number that stands for the object; 0 after `close` and for null.
VX_API unsigned int VxNetTcpSocketGetId(VxNetTcpSocket* socket);
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketShutdownInput(VxNetTcpSocket* socket);
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketShutdownOutput(VxNetTcpSocket* socket);
VX_API ENUM_VX_E_SOCKET VxNetTcpSocketShutdownBoth(VxNetTcpSocket* socket);

/// The arguments are those of the system's `socket`. The caller destroys the result.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketStaticCreate(
    int domain, int type, int protocol, VxNetTcpClientSocket** out);
/// `length` counts the bytes of the address.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketBind(
    VxNetTcpClientSocket* client, const union vx_sockaddr_union* address, unsigned int length);
/// Waits as long as the system does.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketConnect(
    VxNetTcpClientSocket* client, const union vx_sockaddr_union* address, unsigned int length);
/// `*length` is the size of `address` in bytes and becomes the length of the complete address.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketGetLocalAddress(
    VxNetTcpClientSocket* client, union vx_sockaddr_union* address, int* length);

/// As the system's call of that name. The two names, here and below, are the same function.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketGetsockopt(
    VxNetTcpWorkerSocket* worker, int32_t level, int32_t name, char* value, int* length);
VX_API ENUM_VX_E_SOCKET VxNetTcpWorkerSocketGetsockopt(
    VxNetTcpWorkerSocket* worker, int32_t level, int32_t name, char* value, int* length);
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketSetsockopt(
    VxNetTcpWorkerSocket* worker, int32_t level, int32_t name, const char* value, int length);
VX_API ENUM_VX_E_SOCKET VxNetTcpWorkerSocketSetsockopt(
    VxNetTcpWorkerSocket* worker, int32_t level, int32_t name, const char* value, int length);
/// One receive of up to `length` bytes. `*count` is the number of bytes received: 0 with success if the peer has
/// closed, -1 after a failure.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketRecv(
    VxNetTcpWorkerSocket* worker, char* buffer, unsigned int length, int32_t flags, int32_t* count);
VX_API ENUM_VX_E_SOCKET VxNetTcpWorkerSocketRecv(
    VxNetTcpWorkerSocket* worker, char* buffer, unsigned int length, int32_t flags, int32_t* count);
/// One send. `*count` may be less than `length`, and is -1 after a failure.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketSend(
    VxNetTcpWorkerSocket* worker, char* buffer, unsigned int length, int32_t flags, int32_t* count);
VX_API ENUM_VX_E_SOCKET VxNetTcpWorkerSocketSend(
    VxNetTcpWorkerSocket* worker, char* buffer, unsigned int length, int32_t flags, int32_t* count);
/// Waits until a socket can be read, written, or has an exception. Each set has an array (or null) and a count of at
/// most 63. On return each count is the number of ready entries, and the other entries of the array are null.
VX_API ENUM_VX_E_SOCKET VxNetTcpClientSocketStaticSelect(VxNetTcpWorkerSocket** read, uint32_t* readCount,
    VxNetTcpWorkerSocket** write, uint32_t* writeCount, VxNetTcpWorkerSocket** except, uint32_t* exceptCount,
    const struct timeval* timeout, int32_t* ready);
VX_API ENUM_VX_E_SOCKET VxNetTcpWorkerSocketStaticSelect(VxNetTcpWorkerSocket** read, uint32_t* readCount,
    VxNetTcpWorkerSocket** write, uint32_t* writeCount, VxNetTcpWorkerSocket** except, uint32_t* exceptCount,
    const struct timeval* timeout, int32_t* ready);

/// The arguments are stored for the native sockets. The caller destroys the result.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketStaticCreate(
    int domain, int type, int protocol, VxNetTcpServerSocket** out);
/// Adds the wildcard addresses of IPv6 and IPv4.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListAddAddrAny(VxNetTcpServerSocket* server, unsigned short port);
/// Adds every address of the hosts in a list with commas. Port 0 means the port of `service`; otherwise `service` may
/// be null.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListAddAddrInfo(
    VxNetTcpServerSocket* server, const char* hosts, const char* service, unsigned short port);
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListClear(VxNetTcpServerSocket* server);
/// Saves the address if there is exactly one, and empties the bind list.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListSaveOneForNamedPipeReply(VxNetTcpServerSocket* server);
/// "[::]:9000; 0.0.0.0:9000" in the default encoding. `*length` is the size of `text` and becomes the number of bytes
/// written. VX_E_SOCKET_EFAULT if it is too small.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListAddressesDiagnosticStrA(
    VxNetTcpServerSocket* server, char* text, uint32_t* length);
/// Succeeds if at least one socket could be bound.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBind(VxNetTcpServerSocket* server);
/// A `backlog` below 1 means the system's maximum.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketListen(VxNetTcpServerSocket* server, int backlog);
/// Fills the bound list, with the port that the system chose if port 0 was given.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketSaveBoundAddresses(VxNetTcpServerSocket* server);
/// Copies a bound address in the system's form. `*length` is the size of `address` and becomes the number of bytes
/// copied.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketGetBoundAddress(
    VxNetTcpServerSocket* server, uint32_t index, signed char* address, unsigned int* length);
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketBoundListAddressesDiagnosticStrA(
    VxNetTcpServerSocket* server, char* text, uint32_t* length);
/// Waits without a limit for a connection on any of the sockets.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketAccept(VxNetTcpServerSocket* server, VxNetTcpWorkerSocket** out);
/// The connection as a native socket; all bits are 1 if there is none.
VX_API ENUM_VX_E_SOCKET VxNetTcpServerSocketAcceptSocket(VxNetTcpServerSocket* server, unsigned int* socket);

/// The port of a TCP service in host order; 0 with success for an empty name.
VX_API ENUM_VX_E_SOCKET VxNetInetSocketAddressStaticGetPortHostOrderFromTcpServiceName(
    const char* service, unsigned short* port);
/// "192.0.2.1:80" or "[::1]:80" in the default encoding. `*length` is the size of `text` and becomes the number of
/// bytes written. VX_E_SOCKET_EFAULT if it is too small.
VX_API ENUM_VX_E_SOCKET VxNetInetSocketAddressGetDiagnosticStr(
    const union vx_sockaddr_union* address, char* text, unsigned int* length);
/// The numeric text of the address without a port, in the same way.
VX_API ENUM_VX_E_SOCKET VxNetInetAddressGetAddressStr(
    const union vx_sockaddr_union* address, char* text, unsigned int* length);
/// Each writes 1 or 0.
VX_API ENUM_VX_E_SOCKET VxNetInetAddressIsAddressAny(const union vx_sockaddr_union* address, short* answer);
VX_API ENUM_VX_E_SOCKET VxNetInetAddressIsAddressLoopback(const union vx_sockaddr_union* address, short* answer);
VX_API ENUM_VX_E_SOCKET VxNetInetAddressIsAddressNone(const union vx_sockaddr_union* address, short* answer);

#ifdef __cplusplus
}
#endif
