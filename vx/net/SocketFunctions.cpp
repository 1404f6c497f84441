#include "vx/net/SocketFunctions.h"

#include "vx/net/TcpClientSocket2.h"
#include "vx/net/TcpServerSocket2.h"
#include "vx/net/detail/TextOut.h"

#include <memory>
#include <type_traits>

using namespace vx::net;

namespace {

/// Runs an operation of a socket, which may be null. An overloaded operation is chosen by naming its `Parameters`.
template <class... Parameters, class Socket, class Owner, class Result>
ENUM_VX_E_SOCKET call(
    Socket* socket, Result (Owner::*operation)(Parameters...), std::type_identity_t<Parameters>... arguments)
{
    if (socket == nullptr)
        return VX_E_SOCKET_EINVAL;
    if constexpr (std::is_void_v<Result>) {
        (socket->*operation)(arguments...);
        return VX_E_SOCKET_OK;
    } else {
        return (socket->*operation)(arguments...);
    }
}

/// Calls `question` on a temporary object of the family of `address`.
ENUM_VX_E_SOCKET ask(const vx_sockaddr_union* address, short* answer, short (InetAddress::*question)() const)
{
    if (answer != nullptr)
        *answer = 0;
    if (address == nullptr || answer == nullptr)
        return VX_E_SOCKET_EINVAL;
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    const auto answerBy = [&](const InetAddress& asked) {
        if (status == VX_E_SOCKET_OK)
            *answer = (asked.*question)();
        return status;
    };
    switch (address->generic.sa_family) {
    case AF_INET:
        return answerBy(Inet4Address(address, &status));
    case AF_INET6:
        return answerBy(Inet6Address(address, &status));
    default:
        return VX_E_SOCKET_EINVAL;
    }
}

} // namespace

ENUM_VX_E_SOCKET VxNetTcpSocketStaticInit(void)
{
    return TcpSocket2::init();
}

ENUM_VX_E_SOCKET VxNetTcpSocketStaticUninit(void)
{
    return VX_E_SOCKET_OK;
}

ENUM_VX_E_SOCKET VxNetTcpSocketStaticGetVersion(int32_t* major, int32_t* minor)
{
    return TcpSocket2::getVersion(major, minor);
}

ENUM_VX_E_SOCKET VxNetTcpSocketStaticGetaddrinfo(
    const char* host, unsigned short port, addrinfo* hints, uint32_t index, vx_sockaddr_union* result)
{
    return TcpSocket2::getAddrInfo(host, port, hints, index, result);
}

ENUM_VX_E_SOCKET VxNetTcpSocketStaticDestroy(TcpSocket2** socket)
{
    return TcpSocket2::destroyTcpSocket2(socket);
}

unsigned int VxNetTcpSocketGetId(TcpSocket2* socket)
{
    return socket != nullptr ? socket->getId() : 0;
}

ENUM_VX_E_SOCKET VxNetTcpSocketClose(TcpSocket2* socket)
{
    return call(socket, &TcpSocket2::close);
}

ENUM_VX_E_SOCKET VxNetTcpSocketShutdownInput(TcpSocket2* socket)
{
    return call(socket, &TcpSocket2::shutdownInput);
}

ENUM_VX_E_SOCKET VxNetTcpSocketShutdownOutput(TcpSocket2* socket)
{
    return call(socket, &TcpSocket2::shutdownOutput);
}

ENUM_VX_E_SOCKET VxNetTcpSocketShutdownBoth(TcpSocket2* socket)
{
    return call(socket, &TcpSocket2::shutdownBoth);
}

ENUM_VX_E_SOCKET VxNetTcpClientSocketStaticCreate(int domain, int type, int protocol, TcpClientSocket2** out)
{
    return TcpClientSocket2::createTcpClientSocket2(domain, type, protocol, out);
}

ENUM_VX_E_SOCKET VxNetTcpClientSocketBind(
    TcpClientSocket2* client, const vx_sockaddr_union* address, unsigned int length)
{
    return call(client, &TcpClientSocket2::bind, address, length);
}

ENUM_VX_E_SOCKET VxNetTcpClientSocketConnect(
    TcpClientSocket2* client, const vx_sockaddr_union* address, unsigned int length)
{
    return call(client, &TcpClientSocket2::connect, address, length);
}

ENUM_VX_E_SOCKET VxNetTcpClientSocketGetLocalAddress(TcpClientSocket2* client, vx_sockaddr_union* address, int* length)
{
    return call(client, &TcpClientSocket2::getLocalAddress, address, length);
}

ENUM_VX_E_SOCKET VxNetTcpWorkerSocketGetsockopt(
    TcpWorkerSocket2* worker, int32_t level, int32_t name, char* value, int* length)
{
    return call(worker, &TcpWorkerSocket2::getsockopt, level, name, value, length);
}

ENUM_VX_E_SOCKET VxNetTcpWorkerSocketSetsockopt(
    TcpWorkerSocket2* worker, int32_t level, int32_t name, const char* value, int length)
{
    return call(worker, &TcpWorkerSocket2::setsockopt, level, name, value, length);
}

ENUM_VX_E_SOCKET VxNetTcpWorkerSocketRecv(
    TcpWorkerSocket2* worker, char* buffer, unsigned int length, int32_t flags, int32_t* count)
{
    return call(worker, &TcpWorkerSocket2::recv, buffer, length, flags, count);
}

ENUM_VX_E_SOCKET VxNetTcpWorkerSocketSend(
    TcpWorkerSocket2* worker, char* buffer, unsigned int length, int32_t flags, int32_t* count)
{
    return call<char*, unsigned int, std::int32_t, std::int32_t*>(
        worker, &TcpWorkerSocket2::send, buffer, length, flags, count);
}

ENUM_VX_E_SOCKET VxNetTcpWorkerSocketStaticSelect(TcpWorkerSocket2** read, uint32_t* readCount,
    TcpWorkerSocket2** write, uint32_t* writeCount, TcpWorkerSocket2** except, uint32_t* exceptCount,
    const timeval* timeout, int32_t* ready)
{
    return TcpWorkerSocket2::select(read, readCount, write, writeCount, except, exceptCount, timeout, ready);
}

// Each of these is one function with two names.
decltype(VxNetTcpWorkerSocketGetsockopt) VxNetTcpClientSocketGetsockopt
    [[gnu::alias("VxNetTcpWorkerSocketGetsockopt")]];
decltype(VxNetTcpWorkerSocketSetsockopt) VxNetTcpClientSocketSetsockopt
    [[gnu::alias("VxNetTcpWorkerSocketSetsockopt")]];
decltype(VxNetTcpWorkerSocketRecv) VxNetTcpClientSocketRecv [[gnu::alias("VxNetTcpWorkerSocketRecv")]];
decltype(VxNetTcpWorkerSocketSend) VxNetTcpClientSocketSend [[gnu::alias("VxNetTcpWorkerSocketSend")]];
decltype(VxNetTcpWorkerSocketStaticSelect) VxNetTcpClientSocketStaticSelect
    [[gnu::alias("VxNetTcpWorkerSocketStaticSelect")]];

ENUM_VX_E_SOCKET VxNetTcpServerSocketStaticCreate(int domain, int type, int protocol, TcpServerSocket2** out)
{
    return TcpServerSocket2::createTcpServerSocket2(domain, type, protocol, out);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListAddAddrAny(TcpServerSocket2* server, unsigned short port)
{
    return call(server, &TcpServerSocket2::bindListAddAddrAny, port);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListAddAddrInfo(
    TcpServerSocket2* server, const char* hosts, const char* service, unsigned short port)
{
    return call(server, &TcpServerSocket2::bindListAddAddrInfo, hosts, service, port);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListClear(TcpServerSocket2* server)
{
    return call(server, &TcpServerSocket2::bindListClear);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListSaveOneForNamedPipeReply(TcpServerSocket2* server)
{
    return call(server, &TcpServerSocket2::bindListSaveOneForNamedPipeReply);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBindListAddressesDiagnosticStrA(
    TcpServerSocket2* server, char* text, uint32_t* length)
{
    if (text == nullptr || length == nullptr)
        return VX_E_SOCKET_EINVAL;
    return call(server, &TcpServerSocket2::bindListAddressesDiagnosticStrA, text, length);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBind(TcpServerSocket2* server)
{
    return call(server, &TcpServerSocket2::bind);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketListen(TcpServerSocket2* server, int backlog)
{
    return call(server, &TcpServerSocket2::listen, backlog);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketSaveBoundAddresses(TcpServerSocket2* server)
{
    return call(server, &TcpServerSocket2::saveBoundAddresses);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketGetBoundAddress(
    TcpServerSocket2* server, uint32_t index, signed char* address, unsigned int* length)
{
    return call(server, &TcpServerSocket2::getBoundAddress, index, address, length);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketBoundListAddressesDiagnosticStrA(
    TcpServerSocket2* server, char* text, uint32_t* length)
{
    if (text == nullptr || length == nullptr)
        return VX_E_SOCKET_EINVAL;
    return call(server, &TcpServerSocket2::boundListAddressesDiagnosticStrA, text, length);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketAccept(TcpServerSocket2* server, TcpWorkerSocket2** out)
{
    return call<TcpWorkerSocket2**>(server, &TcpServerSocket2::accept, out);
}

ENUM_VX_E_SOCKET VxNetTcpServerSocketAcceptSocket(TcpServerSocket2* server, unsigned int* socket)
{
    return call<unsigned int*>(server, &TcpServerSocket2::accept, socket);
}

ENUM_VX_E_SOCKET VxNetInetSocketAddressStaticGetPortHostOrderFromTcpServiceName(
    const char* service, unsigned short* port)
{
    if (service == nullptr || port == nullptr)
        return VX_E_SOCKET_EINVAL;
    return InetSocketAddress::getPortHostOrderFromTcpServiceName(service, port);
}

ENUM_VX_E_SOCKET VxNetInetSocketAddressGetDiagnosticStr(
    const vx_sockaddr_union* address, char* text, unsigned int* length)
{
    return detail::writeText(text, length, [&](vx::String& built) {
        ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
        InetSocketAddress(address, &status).getDiagnosticStr(built);
        return status;
    });
}

ENUM_VX_E_SOCKET VxNetInetAddressGetAddressStr(const vx_sockaddr_union* address, char* text, unsigned int* length)
{
    return detail::writeText(text, length, [&](vx::String& built) {
        InetAddress* held = nullptr;
        const ENUM_VX_E_SOCKET status = InetAddress::create(address, &held);
        const std::unique_ptr<InetAddress> owner(held);
        return status == VX_E_SOCKET_OK ? held->getAddressStr(built) : status;
    });
}

ENUM_VX_E_SOCKET VxNetInetAddressIsAddressAny(const vx_sockaddr_union* address, short* answer)
{
    return ask(address, answer, &InetAddress::isAddressAny);
}

ENUM_VX_E_SOCKET VxNetInetAddressIsAddressLoopback(const vx_sockaddr_union* address, short* answer)
{
    return ask(address, answer, &InetAddress::isAddressLoopback);
}

ENUM_VX_E_SOCKET VxNetInetAddressIsAddressNone(const vx_sockaddr_union* address, short* answer)
{
    return ask(address, answer, &InetAddress::isAddressNone);
}
