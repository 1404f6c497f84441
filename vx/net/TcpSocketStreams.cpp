#include "vx/net/TcpSocketStreams.h"

#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/io/IoException.h"
#include "vx/net/detail/NativeResult.h"
#include "vxsys/Socket.h"

#include <concepts>
#include <sys/socket.h>

namespace vx::net {

using namespace detail;

namespace {

template <class Failure>
[[noreturn]] void fail(const String& description, std::int32_t why)
{
    const Failure failure(description);
    noteCause(failure, why);
    throw failure;
}

/// Without a limit if `timeout` is below 1: the transfer itself waits then.
void waitFor(VXSocket socket, std::int16_t wanted, int timeout)
{
    if (timeout > 0 && VXSocketWaitReady(socket, wanted, static_cast<std::uint32_t>(timeout)) == VX_SOCKET_TIMED_OUT)
        fail<io::TimeoutException>(u"socket timeout", RESULT_TIMED_OUT);
}

/// Repeats a transfer that a signal has interrupted. Throws if it fails.
template <std::invocable<std::int32_t*> Transfer>
std::int32_t complete(const char16_t* where, Transfer&& transfer)
{
    std::int32_t count = 0;
    std::int32_t error = 0;
    do
        error = transfer(&count);
    while (error == VX_SOCKET_INTERRUPTED);
    if (error != 0)
        fail<io::IoException>(where + String(VXGetDescriptionFromVX_E_SOCKET(resultOf(error))), resultOf(error));
    return count;
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
    waitFor(m_socket, VX_SOCKET_READ, m_timeout);
    const std::int32_t got = complete(u"TcpSocketInputStream::read ", [&](std::int32_t* count) {
        return VXSocketReceive(m_socket, buffer, static_cast<std::uint32_t>(length), 0, count);
    });
    return got > 0 ? got : -1;
}

TcpSocketOutputStream::TcpSocketOutputStream(TcpSocketHandle* handle)
    : m_handle(handle)
    , m_socket(handle->getSocket())
{
}

TcpSocketOutputStream::~TcpSocketOutputStream() noexcept = default;

void TcpSocketOutputStream::write(const signed char* buffer, std::int32_t length)
{
    const int timeout = m_timeout;
    while (length > 0) { // a signal ends a send early
        waitFor(m_socket, VX_SOCKET_WRITE, timeout);
        const std::int32_t sent = complete(u"TcpSocketOutputStream::write ", [&](std::int32_t* count) {
            const auto size = static_cast<std::uint32_t>(length);
            const std::int32_t error = VXSocketSend(m_socket, buffer, size, timeout > 0 ? MSG_DONTWAIT : 0, count);
            return timeout > 0 && error == VX_SOCKET_WOULD_BLOCK ? 0 : error; // another thread was faster
        });
        buffer += sent;
        length -= sent;
    }
}

} // namespace vx::net
