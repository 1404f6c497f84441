#include "vx/net/TcpSocketStreams.h"

#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/io/IoException.h"
#include "vx/net/detail/NativeResult.h"
#include "vxsys/Socket.h"

#include <concepts>

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
    if (const int timeout = m_timeout; timeout > 0
        && VXSocketWaitReady(m_socket, VX_SOCKET_READ, static_cast<std::uint32_t>(timeout)) == VX_SOCKET_TIMED_OUT)
        fail<io::TimeoutException>(u"socket timeout", RESULT_TIMED_OUT);
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
    while (length > 0) { // a signal ends a send early
        const std::int32_t sent = complete(u"TcpSocketOutputStream::write ", [&](std::int32_t* count) {
            return VXSocketSend(m_socket, buffer, static_cast<std::uint32_t>(length), 0, count);
        });
        buffer += sent;
        length -= sent;
    }
}

} // namespace vx::net
