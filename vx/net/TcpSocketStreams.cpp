#include "vx/net/TcpSocketStreams.h"

#include "vx/Result.h"
#include "vx/io/IoException.h"
#include "vx/net/detail/NativeSocket.h"

#include <chrono>
#include <span>

namespace vx::net {

using namespace detail;

namespace {

[[noreturn]] void fail(const char16_t* where, ENUM_VX_E_SOCKET why)
{
    throw io::IoException(String(where) + String(VXGetDescriptionFromVX_E_SOCKET(why)));
}

} // namespace

TcpSocketInputStream::TcpSocketInputStream(TcpSocketHandle* handle)
    : m_handle(handle)
    , m_socket(handle->getSocket())
{
}

TcpSocketInputStream::~TcpSocketInputStream() noexcept = default;

std::int32_t TcpSocketInputStream::read(signed char* buffer, std::int32_t length)
{
    if (length < 1)
        return 0;
    if (const int timeout = m_timeout; timeout > 0) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout);
        pollfd entry {static_cast<int>(m_socket), WAIT_READ, 0};
        if (retryOnSignal([&] { return waitUntil({&entry, 1}, end); }) == 0)
            throw io::TimeoutException(u"socket timeout");
    }
    const ssize_t got = retryOnSignal(
        [&] { return ::recv(static_cast<int>(m_socket), buffer, static_cast<std::size_t>(length), 0); });
    if (got < 0)
        fail(u"TcpSocketInputStream::read ", lastError());
    return got > 0 ? static_cast<std::int32_t>(got) : -1;
}

TcpSocketOutputStream::TcpSocketOutputStream(TcpSocketHandle* handle)
    : m_handle(handle)
    , m_socket(handle->getSocket())
{
}

TcpSocketOutputStream::~TcpSocketOutputStream() noexcept = default;

void TcpSocketOutputStream::write(const signed char* buffer, std::int32_t length)
{
    while (length > 0) { // a signal ends a send early
        const ssize_t sent = retryOnSignal(
            [&] { return ::send(static_cast<int>(m_socket), buffer, static_cast<std::size_t>(length), MSG_NOSIGNAL); });
        if (sent < 0)
            fail(u"TcpSocketOutputStream::write ", lastError());
        buffer += sent;
        length -= static_cast<std::int32_t>(sent);
    }
}

} // namespace vx::net
