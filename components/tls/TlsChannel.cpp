#include "TlsChannel.h"

#include <vx/Exceptions.h>
#include <vx/Occasion.h>
#include <vx/Result.h>
#include <vx/io/ByteBuffer.h>
#include <vxsys/Socket.h>

#include <algorithm>
#include <array>
#include <sys/socket.h>
#include <utility>

namespace vx::components {

namespace {

constexpr std::int32_t BLOCK_SIZE = 16 * 1024;
constexpr std::size_t MOST_UNSENT = 64 * 1024; ///< answers to a peer that does not read them

/// Runs `work` for the bytes of a component's operation.
template <class Byte, class Work>
std::int32_t transfer(Byte* bytes, std::int32_t* length, Work&& work)
{
    if (length == nullptr || (bytes == nullptr && *length != 0))
        return RESULT_POINTER;
    const std::int32_t size = std::exchange(*length, 0);
    if (size < 0)
        return RESULT_INVALID_ARGUMENT;
    return withFailureText([&] {
        *length = work(size);
        return RESULT_OK;
    });
}

std::int32_t remainingOf(const io::ByteBuffer& buffer)
{
    constexpr unsigned int MOST = INT32_MAX;
    return static_cast<std::int32_t>(std::min(buffer.remaining(), MOST));
}

} // namespace

template <class Work>
void TlsChannel::run(Work&& work)
{
    std::int32_t result = RESULT_OK;
    String failure;
    {
        const std::lock_guard session(m_sessionLock);
        result = std::forward<Work>(work)();
        failure = m_session->failure();
    }
    if (result < 0) {
        sendSome();
        throw ResultException(result, failure);
    }
}

TlsChannel::TlsChannel(
    Reference<net::TcpSocketHandle> socket, Reference<Session> session, int timeout, const String& peer)
    : m_socket(std::move(socket))
    , m_session(std::move(session))
    , m_timeout(timeout)
    , m_peer(peer)
{
}

TlsChannel::~TlsChannel() noexcept
{
    m_session->Close();
    sendSome();
    // If bytes are left unread, the system resets the connection, and the peer may lose what was sent.
    std::array<char, 1024> rest;
    std::int32_t count = 1;
    for (int attempt = 0; attempt < 64 && count > 0; ++attempt)
        VXSocketReceive(m_socket->getSocket(), rest.data(), rest.size(), MSG_DONTWAIT, &count);
}

const vorb::InterfaceData* TlsChannel::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<TlsChannel, io::vorb::IVXChannel>(),
        vorb::viewRow<TlsChannel, vorb::IVXFailureText>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

int TlsChannel::read(io::ByteBuffer& buffer)
{
    const unsigned int start = buffer.getPosition();
    const std::int32_t count = receive(buffer.getBuffer() + start, remainingOf(buffer));
    if (count > 0)
        buffer.setPosition(start + static_cast<unsigned int>(count));
    return count;
}

int TlsChannel::write(io::ByteBuffer& buffer)
{
    const unsigned int start = buffer.getPosition();
    const std::int32_t count = remainingOf(buffer);
    send(buffer.getConstBuffer() + start, count);
    buffer.setPosition(start + static_cast<unsigned int>(count));
    return count;
}

std::int32_t TlsChannel::Read(signed char* bytes, std::int32_t* length)
{
    return transfer(bytes, length, [&](std::int32_t size) { return receive(bytes, size); });
}

std::int32_t TlsChannel::Write(const signed char* bytes, std::int32_t* length)
{
    return transfer(bytes, length, [&](std::int32_t size) {
        send(bytes, size);
        return size;
    });
}

std::int32_t TlsChannel::GetInheritanceId(IVXCharBuffer*)
{
    return RESULT_NOT_AVAILABLE; // the keys cannot be inherited
}

void TlsChannel::shakeHands()
{
    if (state() != IVXTlsSession::HANDSHAKING)
        return;
    during(u"TLS handshake with", m_peer, [&] {
        const std::lock_guard handshake(m_handshakeLock);
        const Wait wait(m_timeout);
        while (state() == IVXTlsSession::HANDSHAKING) {
            sendAll();
            fetch(wait);
        }
        sendAll();
    });
}

std::int32_t TlsChannel::receive(signed char* bytes, std::int32_t length)
{
    if (length < 1)
        return 0;
    shakeHands();
    return during(u"read from", m_peer, [&] {
        const std::lock_guard input(m_inputLock);
        for (const Wait wait(m_timeout);; fetch(wait)) {
            std::int32_t count = length;
            auto state = IVXTlsSession::OPEN;
            run([&] {
                const std::int32_t result = m_session->TakePlain(bytes, &count);
                state = m_session->state();
                return result;
            });
            sendSome();
            if (count > 0)
                return count;
            if (state == IVXTlsSession::CLOSED)
                return -1;
        }
    });
}

void TlsChannel::send(const signed char* bytes, std::int32_t length)
{
    shakeHands();
    during(u"write to", m_peer, [&] {
        try {
            while (length > 0) {
                std::int32_t count = length;
                run([&] { return m_session->GivePlain(bytes, &count); });
                bytes += count;
                length -= count;
                sendAll();
            }
        } catch (const ResultException&) {
            if (const std::unique_lock input(m_inputLock, std::try_to_lock); input.owns_lock())
                hearReason();
            throw;
        }
    });
}

void TlsChannel::fetch(const Wait& wait)
{
    std::array<signed char, BLOCK_SIZE> block;
    const unsigned int socket = m_socket->getSocket();
    std::int32_t count = -1;
    while (count < 0) {
        const std::int32_t error = VXSocketReceive(socket, block.data(), block.size(), MSG_DONTWAIT, &count);
        if (error == VX_SOCKET_WOULD_BLOCK)
            wait.until(socket, VX_SOCKET_READ);
        else
            wait.goOn(error, socket, VX_SOCKET_READ);
    }
    if (count > 0)
        feed(block.data(), count);
    else
        run([&] { return m_session->FeedEnd(); });
}

void TlsChannel::feed(const signed char* bytes, std::int32_t length)
{
    while (length > 0) {
        std::int32_t count = length;
        run([&] { return m_session->Feed(bytes, &count); });
        bytes += count;
        length -= count;
        if (count == 0) // the peer makes the session answer, and does not read the answers
            sendAll();
    }
}

void TlsChannel::hearReason()
{
    std::array<signed char, BLOCK_SIZE> block;
    std::int32_t count = 0;
    if (VXSocketReceive(m_socket->getSocket(), block.data(), block.size(), MSG_DONTWAIT, &count) == 0 && count > 0)
        run([&] { return m_session->Feed(block.data(), &count); });
    run([&] { return m_session->look(); });
}

void TlsChannel::collect()
{
    const std::lock_guard session(m_sessionLock);
    std::int32_t count = 0;
    do {
        const std::size_t size = m_unsent.size();
        m_unsent.resize(size + BLOCK_SIZE);
        count = BLOCK_SIZE;
        m_session->TakeEncrypted(m_unsent.data() + size, &count);
        m_unsent.resize(size + static_cast<std::size_t>(count));
    } while (count == BLOCK_SIZE);
}

void TlsChannel::sendAll()
{
    const std::lock_guard output(m_outputLock);
    collect();
    const unsigned int socket = m_socket->getSocket();
    Wait wait(m_timeout);
    while (!m_unsent.empty()) {
        std::int32_t count = 0;
        const std::int32_t error
            = VXSocketSend(socket, m_unsent.data(), static_cast<std::uint32_t>(m_unsent.size()), MSG_DONTWAIT, &count);
        if (error == VX_SOCKET_WOULD_BLOCK)
            wait.until(socket, VX_SOCKET_WRITE);
        else
            wait.goOn(error, socket, VX_SOCKET_WRITE);
        if (count > 0) {
            m_unsent.erase(m_unsent.begin(), m_unsent.begin() + count);
            wait = Wait(m_timeout);
        }
    }
}

void TlsChannel::sendSome() noexcept
{
    const std::unique_lock output(m_outputLock, std::try_to_lock);
    if (!output.owns_lock())
        return;
    std::int32_t count = 0;
    try {
        if (m_unsent.size() < MOST_UNSENT)
            collect();
    } catch (const std::bad_alloc&) { // the session keeps it
    }
    if (!m_unsent.empty())
        VXSocketSend(
            m_socket->getSocket(), m_unsent.data(), static_cast<std::uint32_t>(m_unsent.size()), MSG_DONTWAIT, &count);
    if (count > 0)
        m_unsent.erase(m_unsent.begin(), m_unsent.begin() + count);
}

IVXTlsSession::State TlsChannel::state()
{
    const std::lock_guard session(m_sessionLock);
    return m_session->state();
}

} // namespace vx::components
