#include "vx/net/TcpServerSocket2.h"

#include "vx/net/TcpWorkerSocket2.h"
#include "vx/net/detail/NativeResult.h"
#include "vxsys/Socket.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <new>
#include <span>
#include <utility>

namespace vx::net {

using namespace detail;

namespace {

/// Up to this many listening sockets, accept() is tried on each before poll() is called.
constexpr unsigned int FEW_SOCKETS = 2;

/// Whether a close or shutdown failed only because the peer has already closed.
bool isOfNoAccount(ENUM_VX_E_SOCKET result)
{
    return result == VX_E_SOCKET_OK || result == VX_E_SOCKET_ENOTCONN || result == VX_E_SOCKET_ECONNRESET;
}

} // namespace

TcpServerSocket2::TcpServerSocket2(int domain, int type, int protocol, ENUM_VX_E_SOCKET* status)
    : TcpSocket2(status)
    , m_domain(domain)
    , m_type(type)
    , m_protocol(protocol)
{
    TcpServerSocket2::socketListClear();
}

TcpServerSocket2::~TcpServerSocket2()
{
    if (getClosed() == 0 && getShutdownOut() == 0)
        TcpServerSocket2::shutdownOutput();
    if (getClosed() == 0)
        TcpServerSocket2::close();
}

ENUM_VX_E_SOCKET TcpServerSocket2::createTcpServerSocket2(int domain, int type, int protocol, TcpServerSocket2** out)
{
    if (out == nullptr)
        return VX_E_SOCKET_EINVAL;
    *out = nullptr;
    ENUM_VX_E_SOCKET status = init();
    if (status != VX_E_SOCKET_OK)
        return status;
    *out = new (std::nothrow) TcpServerSocket2(domain, type, protocol, &status);
    return *out != nullptr ? status : VX_E_SOCKET_EFAULT;
}

unsigned int TcpServerSocket2::getId()
{
    const auto low = static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(this));
    return low != 0 ? low : 1;
}

ENUM_VX_E_SOCKET TcpServerSocket2::shutdownInput()
{
    return shutDown(Direction::INPUT);
}

ENUM_VX_E_SOCKET TcpServerSocket2::shutdownOutput()
{
    return shutDown(Direction::OUTPUT);
}

ENUM_VX_E_SOCKET TcpServerSocket2::shutdownBoth()
{
    return shutDown(Direction::BOTH);
}

ENUM_VX_E_SOCKET TcpServerSocket2::close()
{
    if (getClosed() != 0)
        return VX_E_SOCKET_OK;
    setClosed(1);
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_OK;
    for (unsigned int& slot : std::span(m_sockets).first(std::exchange(m_socketCount, 0U))) {
        const ENUM_VX_E_SOCKET result = resultOf(VXSocketClose(std::exchange(slot, VX_SOCKET_INVALID)));
        if (!isOfNoAccount(result))
            last = result;
    }
    return last;
}

void TcpServerSocket2::socketListClear()
{
    m_sockets.fill(VX_SOCKET_INVALID);
}

ENUM_VX_E_SOCKET TcpServerSocket2::bind()
{
    if (getClosed() != 0)
        return VX_E_SOCKET_ENOTSOCK;
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_OK;
    for (unsigned int index = 0; index < m_bindList.size(); ++index) {
        Next next = Next::ENTRY;
        const ENUM_VX_E_SOCKET result = bindOne(m_bindList.get(index), &next);
        if (next == Next::FAILURE)
            return result;
        if (result != VX_E_SOCKET_OK)
            last = result;
        if (next == Next::END)
            break;
    }
    return m_socketCount > 0 ? VX_E_SOCKET_OK : last;
}

ENUM_VX_E_SOCKET TcpServerSocket2::bindOne(const InetSocketAddress* entry, Next* next)
{
    *next = Next::FAILURE;
    if (entry == nullptr || entry->getAddress() == nullptr)
        return VX_E_SOCKET_EFAULT;
    vx_sockaddr_union storage {};
    unsigned int length = sizeof storage;
    if (const ENUM_VX_E_SOCKET copied = entry->getAddress()->getStorageBinary(&storage, &length);
        copied != VX_E_SOCKET_OK)
        return copied;

    // Non-blocking: a connection may end between the wait and the accept.
    unsigned int handle = VX_SOCKET_INVALID;
    ENUM_VX_E_SOCKET result
        = resultOf(VXSocketOpen(storage.generic.sa_family, m_type | SOCK_NONBLOCK, m_protocol, &handle));
    if (result != VX_E_SOCKET_OK) {
        *next = result == VX_E_SOCKET_EAFNOSUPPORT ? Next::ENTRY : Next::END;
        return result;
    }
    *next = Next::ENTRY;
    const int on = 1;
    if (storage.generic.sa_family == AF_INET6)
        VXSocketSetOption(handle, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    if (m_reusesAddress)
        VXSocketSetOption(handle, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    result = resultOf(VXSocketBind(handle, &storage.generic, length));
    // Several sockets may be bound to the address now, but only one can listen.
    if (result == VX_E_SOCKET_OK && m_reusesAddress)
        result = resultOf(VXSocketListen(handle, 1));
    if (result == VX_E_SOCKET_OK && m_socketCount < MOST_ENTRIES) {
        m_sockets[m_socketCount++] = handle;
        return VX_E_SOCKET_OK;
    }
    if (result == VX_E_SOCKET_OK)
        result = VX_E_SOCKET_EFAULT; // no place for it
    if (const ENUM_VX_E_SOCKET closed = resultOf(VXSocketClose(handle)); closed != VX_E_SOCKET_OK) {
        *next = Next::FAILURE;
        return closed;
    }
    return result;
}

ENUM_VX_E_SOCKET TcpServerSocket2::listen(int backlog)
{
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_OK;
    for (const unsigned int handle : std::span(m_sockets).first(m_socketCount)) {
        const ENUM_VX_E_SOCKET result = resultOf(VXSocketListen(handle, backlog < 1 ? INT_MAX : backlog));
        if (result != VX_E_SOCKET_OK)
            last = result;
    }
    return last;
}

ENUM_VX_E_SOCKET TcpServerSocket2::accept(TcpWorkerSocket2** out)
{
    if (out == nullptr)
        return VX_E_SOCKET_EINVAL;
    *out = nullptr;
    return accept_guts(out, nullptr);
}

ENUM_VX_E_SOCKET TcpServerSocket2::accept(unsigned int* socket)
{
    if (socket == nullptr)
        return VX_E_SOCKET_EINVAL;
    *socket = VX_SOCKET_INVALID;
    return accept_guts(nullptr, socket);
}

ENUM_VX_E_SOCKET TcpServerSocket2::accept_guts(TcpWorkerSocket2** out, unsigned int* socket)
{
    unsigned int handle = VX_SOCKET_INVALID;
    vx_sockaddr_union peer {};
    ENUM_VX_E_SOCKET status = acceptConnection(&handle, &peer);
    if (handle == VX_SOCKET_INVALID)
        return status;
    if (socket != nullptr) {
        *socket = handle;
        return status;
    }
    *out = new (std::nothrow) TcpWorkerSocket2(handle, &peer, &status);
    if (*out == nullptr) {
        VXSocketClose(handle);
        status = VX_E_SOCKET_EFAULT;
    }
    return status;
}

/// Waits on all sockets and accepts one connection. If there is none, `*handle` does not change.
ENUM_VX_E_SOCKET TcpServerSocket2::acceptConnection(unsigned int* handle, vx_sockaddr_union* peer)
{
    if (m_socketCount == 0)
        return VX_E_SOCKET_ENOTSOCK;
    std::int32_t error = 0;
    const auto take = [&](unsigned int listener) {
        std::uint32_t length = sizeof *peer;
        error = VXSocketAccept(listener, &peer->generic, &length, handle);
        return error == 0;
    };
    const std::span<const unsigned int> listeners = std::span(m_sockets).first(m_socketCount);
    if (m_socketCount <= FEW_SOCKETS && std::ranges::any_of(listeners, take)) // a connection was waiting already
        return VX_E_SOCKET_OK;

    std::array<VXSocketWait, MOST_ENTRIES> waits;
    const std::span<VXSocketWait> entries = std::span(waits).first(m_socketCount);
    for (;;) {
        for (unsigned int index = 0; index < m_socketCount; ++index)
            entries[index] = {static_cast<int>(listeners[index]), VX_SOCKET_READ | VX_SOCKET_EXCEPT, 0};
        std::int32_t ready = 0;
        error = VXSocketSelect(entries.data(), m_socketCount, nullptr, &ready);
        if (error != 0)
            return resultOf(error);
        if (ready == 0)
            return VX_E_SOCKET_EINTR;
        const auto find = [&](std::int16_t wanted) {
            return std::ranges::find_if(
                entries, [wanted](const VXSocketWait& entry) { return (entry.ready & wanted) != 0; });
        };
        if (const auto failed = find(VX_SOCKET_EXCEPT); failed != entries.end()) {
            error = VXSocketTakeError(static_cast<unsigned int>(failed->socket));
            if (error != 0)
                return resultOf(error);
        }
        const auto first = find(VX_SOCKET_READ);
        if (first == entries.end() || take(static_cast<unsigned int>(first->socket)))
            return VX_E_SOCKET_OK;
        if (error != VX_SOCKET_WOULD_BLOCK)
            return resultOf(error);
    }
}

ENUM_VX_E_SOCKET TcpServerSocket2::shutDown(Direction direction)
{
    const int how = beginShutdown(direction);
    if (how < 0 || getClosed() != 0)
        return VX_E_SOCKET_OK;
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_OK;
    for (const unsigned int handle : std::span(m_sockets).first(m_socketCount)) {
        const ENUM_VX_E_SOCKET result = resultOf(VXSocketShutdown(handle, how));
        if (!isOfNoAccount(result))
            last = result;
    }
    return last;
}

} // namespace vx::net
