#include "vx/net/TcpSocket2.h"

#include "vx/GlobalLock.h"
#include "vx/sync/ScopedLock.h"
#include "vxsys/Net.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <sys/socket.h>

namespace vx::net {

namespace {

/// The version of the sockets interface that defines the error numbers of the results.
constexpr std::int32_t VERSION_MAJOR = 2;
constexpr std::int32_t VERSION_MINOR = 2;

/// Starts or stops the layer under the library's lock. There is no such lock before the library starts and after it
/// stops, and then no other thread uses the layer.
template <class Work>
ENUM_VX_E_SOCKET underGlobalLock(Work work) noexcept
{
    try {
        if (g_pGlobalLock == nullptr) {
            work();
        } else {
            const sync::ScopedLock lock(*g_pGlobalLock);
            work();
        }
        return VX_E_SOCKET_OK;
    } catch (...) {
        return VX_E_SOCKET_EFAULT;
    }
}

} // namespace

std::atomic<short> TcpSocket2::s_bInitialized {0};
std::atomic<std::int32_t> TcpSocket2::s_VersionMajor {0};
std::atomic<std::int32_t> TcpSocket2::s_VersionMinor {0};

TcpSocket2::TcpSocket2(ENUM_VX_E_SOCKET* status)
{
    const ENUM_VX_E_SOCKET result = init();
    if (status != nullptr)
        *status = result;
}

TcpSocket2::~TcpSocket2()
{
    m_isShutdownIn = 1;
    m_isShutdownOut = 1;
    m_isClosed = 1;
}

short TcpSocket2::getShutdownIn() const
{
    return m_isShutdownIn;
}

short TcpSocket2::getShutdownOut() const
{
    return m_isShutdownOut;
}

short TcpSocket2::getClosed() const
{
    return m_isClosed;
}

void TcpSocket2::setShutdownIn(short isShutdown)
{
    m_isShutdownIn = isShutdown;
}

void TcpSocket2::setShutdownOut(short isShutdown)
{
    m_isShutdownOut = isShutdown;
}

void TcpSocket2::setClosed(short isClosed)
{
    m_isClosed = isClosed;
}

ENUM_VX_E_SOCKET TcpSocket2::init()
{
    if (s_bInitialized.load(std::memory_order_acquire) != 0)
        return VX_E_SOCKET_OK;
    return underGlobalLock([] {
        if (s_bInitialized.load(std::memory_order_relaxed) != 0)
            return;
        s_VersionMajor = VERSION_MAJOR;
        s_VersionMinor = VERSION_MINOR;
        s_bInitialized.store(1, std::memory_order_release);
    });
}

ENUM_VX_E_SOCKET TcpSocket2::uninit()
{
    if (s_bInitialized.load(std::memory_order_acquire) == 0)
        return VX_E_SOCKET_OK;
    return underGlobalLock([] { s_bInitialized.store(0, std::memory_order_release); });
}

ENUM_VX_E_SOCKET TcpSocket2::getVersion(std::int32_t* major, std::int32_t* minor)
{
    if (major == nullptr || minor == nullptr)
        return VX_E_SOCKET_EINVAL;
    const ENUM_VX_E_SOCKET result = init();
    *major = s_VersionMajor;
    *minor = s_VersionMinor;
    return result;
}

ENUM_VX_E_SOCKET TcpSocket2::getAddrInfo(
    const char* host, unsigned short port, addrinfo* hints, std::uint32_t index, vx_sockaddr_union* result)
{
    if (host == nullptr || port == 0 || result == nullptr)
        return VX_E_SOCKET_EINVAL;
    if (const ENUM_VX_E_SOCKET started = init(); started != VX_E_SOCKET_OK)
        return started;

    char service[16] = "";
    std::to_chars(service, service + sizeof service - 1, port);
    addrinfo* list = nullptr;
    if (const int error = VXgetaddrinfo(host, service, hints, &list))
        return VX_E_SOCKETFromNativeEaiSocketError(error);
    const std::unique_ptr<addrinfo, decltype(&VXfreeaddrinfo)> owner(list, VXfreeaddrinfo);
    while (list != nullptr && index-- > 0)
        list = list->ai_next;
    if (list == nullptr)
        return VX_E_SOCKET_EADDRNOTAVAIL;
    std::memcpy(result, list->ai_addr, std::min<std::size_t>(list->ai_addrlen, sizeof *result));
    return VX_E_SOCKET_OK;
}

ENUM_VX_E_SOCKET TcpSocket2::destroyTcpSocket2(TcpSocket2** socket)
{
    if (socket == nullptr)
        return VX_E_SOCKET_EINVAL;
    if (*socket == nullptr)
        return VX_E_SOCKET_OK;
    (*socket)->shutdownOutput();
    (*socket)->close();
    delete *socket;
    *socket = nullptr;
    return VX_E_SOCKET_OK;
}

int TcpSocket2::beginShutdown(Direction direction)
{
    constexpr int DONE = -1;
    const bool isInDone = getShutdownIn() != 0;
    const bool isOutDone = getShutdownOut() != 0;
    int how = DONE;
    switch (direction) {
    case Direction::INPUT:
        if (!isInDone)
            how = isOutDone ? SHUT_RDWR : SHUT_RD;
        break;
    case Direction::OUTPUT:
        if (!isOutDone)
            how = isInDone ? SHUT_RDWR : SHUT_WR;
        break;
    case Direction::BOTH:
        if (!isInDone || !isOutDone)
            how = isInDone ? SHUT_WR : isOutDone ? SHUT_RD : SHUT_RDWR;
        break;
    }
    if (how == DONE)
        return DONE;
    if (direction != Direction::OUTPUT)
        setShutdownIn(1);
    if (direction != Direction::INPUT)
        setShutdownOut(1);
    return how;
}

} // namespace vx::net
