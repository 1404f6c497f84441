#include "Wire.h"

#include "Failure.h"

#include <vx/Result.h>
#include <vx/String.h>
#include <vx/net/SocketResult.h>
#include <vxsys/Socket.h>

#include <algorithm>
#include <array>
#include <new>
#include <sys/socket.h>
#include <type_traits>
#include <utility>

namespace vxtools {

using namespace vx;

namespace {

constexpr std::size_t BLOCK_SIZE = 16 * 1024;
constexpr std::size_t MOST_UNSENT = 8 * BLOCK_SIZE; // and what the session keeps then

template <class Byte>
auto* signedBytes(Byte* bytes)
{
    if constexpr (std::is_const_v<Byte>)
        return reinterpret_cast<const signed char*>(bytes);
    else
        return reinterpret_cast<signed char*>(bytes);
}

/// Calls `transfer` again after a signal.
template <class Transfer>
std::int32_t repeated(Transfer&& transfer)
{
    std::int32_t error = VX_SOCKET_INTERRUPTED;
    while (error == VX_SOCKET_INTERRUPTED)
        error = transfer();
    return error;
}

} // namespace

Wire::Wire(unsigned int socket, const TlsContext* tls)
    : m_socket(socket)
    , m_session(tls != nullptr ? tls->createSession() : nullptr)
{
}

Wire::~Wire()
{
    if (m_session == nullptr)
        return;
    try {
        m_session->Close();
        flush();
    } catch (const std::bad_alloc&) { // the other side sees that the connection is cut off
    }
    // If bytes are left unread, the system resets the connection, and the other side may lose what was sent.
    std::array<char, 1024> rest;
    std::int32_t count = 1;
    for (int attempt = 0; attempt < 64 && count > 0; ++attempt)
        VXSocketReceive(m_socket, rest.data(), rest.size(), MSG_DONTWAIT, &count);
}

Wire::Result Wire::shakeHands()
{
    Result result = flush();
    while (m_session != nullptr && state() == Session::HANDSHAKING) {
        result = fetch();
        flushQuietly();
        if (result != Result::DONE)
            return result;
    }
    return result;
}

Wire::Result Wire::receive(std::string& bytes, std::size_t size)
{
    if (m_session == nullptr)
        return receivePlain(bytes, size);
    constexpr int MOST_BLOCKS = 8; // of a peer that sends no plain bytes, so that others get their turn
    for (int block = 0; block < MOST_BLOCKS; ++block) {
        const std::size_t before = bytes.size();
        const Result result = takePlain(bytes);
        flushQuietly();
        if (bytes.size() > before)
            return Result::DONE;
        if (result != Result::LATER)
            return result;
        if (const Result fetched = fetch(); fetched != Result::DONE) {
            flushQuietly();
            return fetched;
        }
    }
    return Result::LATER;
}

Wire::Result Wire::drop()
{
    std::string bytes;
    return receivePlain(bytes, BLOCK_SIZE);
}

Wire::Result Wire::send(std::string_view& bytes)
{
    if (m_session == nullptr)
        return sendPlain(bytes);
    auto count = static_cast<std::int32_t>(std::min<std::size_t>(bytes.size(), INT32_MAX));
    if (m_session->GivePlain(signedBytes(bytes.data()), &count) < 0) {
        flush(); // the other side is told why
        return failSession();
    }
    bytes.remove_prefix(static_cast<std::size_t>(count));
    const Result result = flush();
    return result == Result::LATER && count > 0 ? Result::DONE : result;
}

void Wire::endOutput()
{
    m_isEnding = true;
    if (m_session != nullptr)
        m_session->Close();
    flush();
}

bool Wire::wantsToWrite(bool hasMore) const
{
    return !m_unsent.empty() || (hasMore && (m_session == nullptr || state() != Session::HANDSHAKING));
}

bool Wire::wantsToRead() const
{
    return m_unsent.size() < MOST_UNSENT;
}

std::int32_t Wire::state() const
{
    std::int32_t state = Session::FAILED;
    m_session->GetState(&state);
    return state;
}

Wire::Result Wire::receivePlain(std::string& bytes, std::size_t size)
{
    std::array<char, BLOCK_SIZE> block; // `bytes` of a silent peer must not grow
    std::int32_t count = 0;
    const std::int32_t error = repeated([&] {
        return VXSocketReceive(
            m_socket, block.data(), static_cast<std::uint32_t>(std::min(size, block.size())), MSG_DONTWAIT, &count);
    });
    if (error != 0)
        return failSocket(error);
    bytes.append(block.data(), static_cast<std::size_t>(std::max(count, 0)));
    return count > 0 ? Result::DONE : Result::CLOSED;
}

Wire::Result Wire::sendPlain(std::string_view& bytes)
{
    if (bytes.empty())
        return Result::DONE;
    std::int32_t count = 0;
    const std::int32_t error = repeated([&] {
        return VXSocketSend(m_socket, bytes.data(), static_cast<std::uint32_t>(bytes.size()), MSG_DONTWAIT, &count);
    });
    if (error != 0)
        return failSocket(error);
    bytes.remove_prefix(static_cast<std::size_t>(count));
    return Result::DONE;
}

Wire::Result Wire::takePlain(std::string& bytes)
{
    for (;;) {
        const std::size_t length = bytes.size();
        bytes.resize(length + BLOCK_SIZE);
        std::int32_t count = BLOCK_SIZE;
        const std::int32_t result = m_session->TakePlain(signedBytes(bytes.data() + length), &count);
        bytes.resize(length + static_cast<std::size_t>(count));
        if (result < 0)
            return failSession();
        if (count == 0)
            return state() == Session::CLOSED ? Result::CLOSED : Result::LATER;
    }
}

Wire::Result Wire::fetch()
{
    if (!wantsToRead())
        return Result::LATER; // the session takes nothing while it has much to send
    std::array<signed char, BLOCK_SIZE> block;
    std::int32_t count = 0;
    const std::int32_t error
        = repeated([&] { return VXSocketReceive(m_socket, block.data(), block.size(), MSG_DONTWAIT, &count); });
    if (error != 0)
        return failSocket(error);
    if (count == 0)
        return m_session->FeedEnd() < 0 ? failSession() : Result::DONE;
    std::int32_t taken = count;
    if (m_session->Feed(block.data(), &taken) < 0)
        return failSession();
    if (taken == count)
        return Result::DONE;
    m_reason = "the other side does not read what it asks for";
    return Result::BROKEN;
}

Wire::Result Wire::flush()
{
    std::int32_t count = BLOCK_SIZE;
    while (m_session != nullptr && m_unsent.size() < MOST_UNSENT && count == BLOCK_SIZE) {
        const std::size_t length = m_unsent.size();
        m_unsent.resize(length + BLOCK_SIZE);
        m_session->TakeEncrypted(signedBytes(m_unsent.data() + length), &count);
        m_unsent.resize(length + static_cast<std::size_t>(count));
    }
    Result result = Result::DONE;
    std::string_view rest = m_unsent;
    while (!rest.empty() && result == Result::DONE)
        result = sendPlain(rest);
    m_unsent.erase(0, result == Result::BROKEN ? m_unsent.size() : m_unsent.size() - rest.size());
    if (m_unsent.empty() && std::exchange(m_isEnding, false))
        VXSocketShutdown(m_socket, SHUT_WR);
    return result;
}

void Wire::flushQuietly()
{
    const std::string reason = m_reason;
    flush();
    m_reason = reason;
}

Wire::Result Wire::failSession()
{
    const Reference<String> text(new String);
    m_session->GetFailure(text.get());
    m_reason = text->isEmpty() ? textOfResult(RESULT_OUT_OF_MEMORY) : text->toUtf8();
    return Result::BROKEN;
}

Wire::Result Wire::failSocket(std::int32_t error)
{
    if (error == VX_SOCKET_WOULD_BLOCK)
        return Result::LATER;
    m_reason = textOfResult(VX_E_SOCKETFromNativeSocketError(error));
    return Result::BROKEN;
}

} // namespace vxtools
