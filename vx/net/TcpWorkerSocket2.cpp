#include "vx/net/TcpWorkerSocket2.h"

#include "vx/net/detail/NativeResult.h"
#include "vxsys/Socket.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <utility>

namespace vx::net {

namespace {

using namespace detail;

/// One of the three sets of `select`.
struct SelectSet {
    TcpWorkerSocket2** sockets;
    std::uint32_t* count;
    std::int16_t wanted;
    std::uint32_t size = 0; ///< the count at the start
};

constexpr std::uint32_t MOST_SOCKETS = 63;
constexpr std::size_t SETS = 3;

/// The descriptors to wait for, one entry each.
class WaitList {
public:
    /// VX_E_SOCKET_ENOTSOCK for a closed socket.
    ENUM_VX_E_SOCKET add(TcpWorkerSocket2* socket, std::int16_t wanted)
    {
        if (socket == nullptr)
            return VX_E_SOCKET_EINVAL;
        const unsigned int id = socket->getId();
        if (id == 0)
            return VX_E_SOCKET_ENOTSOCK;
        std::uint8_t& place = placeOf(id);
        if (place == 0) {
            m_ids[m_size] = id;
            m_entries[m_size] = {static_cast<int>(id), 0, 0};
            place = static_cast<std::uint8_t>(++m_size);
        }
        VXSocketWait& entry = m_entries[place - 1U];
        entry.wanted = static_cast<std::int16_t>(entry.wanted | wanted);
        return VX_E_SOCKET_OK;
    }

    /// What a descriptor is ready for; nothing if it has not been added.
    std::int16_t readyOf(unsigned int id)
    {
        const std::uint8_t place = placeOf(id);
        return place != 0 ? m_entries[place - 1U].ready : std::int16_t {0};
    }

    std::span<VXSocketWait> entries() { return {m_entries.data(), m_size}; }

private:
    static constexpr std::size_t PLACES = 512; // a power of two, and so large that few descriptors share a place
    static_assert(SETS * MOST_SOCKETS < UINT8_MAX);

    /// The place for the number of the entry of `id`, which counts from 1. It has 0 if there is no such entry.
    std::uint8_t& placeOf(unsigned int id)
    {
        std::size_t place = id % PLACES;
        while (m_places[place] != 0 && m_ids[m_places[place] - 1U] != id)
            place = (place + 1) % PLACES;
        return m_places[place];
    }

    std::array<std::uint8_t, PLACES> m_places {};
    std::array<unsigned int, SETS * MOST_SOCKETS> m_ids;
    std::array<VXSocketWait, SETS * MOST_SOCKETS> m_entries;
    std::size_t m_size = 0;
};

/// Keeps the ready sockets in the array and counts them. Returns the result of the last exception.
ENUM_VX_E_SOCKET keepReady(SelectSet& set, WaitList& waits, ENUM_VX_E_SOCKET result)
{
    for (TcpWorkerSocket2*& socket : std::span(set.sockets, set.size)) {
        const unsigned int id = socket->getId();
        if (id == 0)
            return VX_E_SOCKET_ENOTSOCK;
        if ((waits.readyOf(id) & set.wanted) == 0) {
            socket = nullptr;
            continue;
        }
        ++*set.count;
        if (set.wanted == VX_SOCKET_EXCEPT)
            result = resultOf(VXSocketTakeError(id));
    }
    return result;
}

} // namespace

TcpWorkerSocket2::TcpWorkerSocket2(unsigned int id, ENUM_VX_E_SOCKET* status)
    : TcpSocket2(status)
    , m_handle(id)
{
}

TcpWorkerSocket2::TcpWorkerSocket2(unsigned int id, const vx_sockaddr_union* peer, ENUM_VX_E_SOCKET* status)
    : TcpWorkerSocket2(id, status)
{
    m_peer.reset(new (std::nothrow) InetSocketAddress(peer, status));
    if (m_peer == nullptr && status != nullptr)
        *status = VX_E_SOCKET_EFAULT;
}

TcpWorkerSocket2::~TcpWorkerSocket2()
{
    if (getClosed() == 0 && getShutdownOut() == 0)
        TcpWorkerSocket2::shutdownOutput();
    if (getClosed() == 0)
        TcpWorkerSocket2::close();
}

unsigned int TcpWorkerSocket2::getId()
{
    return m_handle != VX_SOCKET_INVALID ? m_handle : 0;
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::shutdownInput()
{
    return shutDown(Direction::INPUT);
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::shutdownOutput()
{
    return shutDown(Direction::OUTPUT);
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::shutdownBoth()
{
    return shutDown(Direction::BOTH);
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::close()
{
    if (getClosed() != 0)
        return VX_E_SOCKET_OK;
    setClosed(1);
    return resultOf(VXSocketClose(std::exchange(m_handle, VX_SOCKET_INVALID)));
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::getsockopt(std::int32_t level, std::int32_t name, char* value, int* length)
{
    return resultOnOpen(*this, value != nullptr && length != nullptr && *length >= 0, [&] {
        auto size = static_cast<std::uint32_t>(*length);
        const std::int32_t error = VXSocketGetOption(m_handle, level, name, value, &size);
        *length = static_cast<int>(size);
        return error;
    });
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::recv(char* buffer, unsigned int length, std::int32_t flags, std::int32_t* count)
{
    return resultOnOpen(*this, buffer != nullptr && count != nullptr,
        [&] { return VXSocketReceive(m_handle, buffer, length, flags, count); });
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::send(char* buffer, unsigned int length, std::int32_t flags, std::int32_t* count)
{
    return resultOnOpen(*this, buffer != nullptr && count != nullptr,
        [&] { return VXSocketSend(m_handle, buffer, length, flags, count); });
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::setsockopt(std::int32_t level, std::int32_t name, const char* value, int length)
{
    return resultOnOpen(*this, value != nullptr && length >= 0,
        [&] { return VXSocketSetOption(m_handle, level, name, value, static_cast<std::uint32_t>(length)); });
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::select(TcpWorkerSocket2** read, std::uint32_t* readCount, TcpWorkerSocket2** write,
    std::uint32_t* writeCount, TcpWorkerSocket2** except, std::uint32_t* exceptCount, const timeval* timeout,
    std::int32_t* ready)
{
    if (readCount == nullptr || writeCount == nullptr || exceptCount == nullptr || ready == nullptr)
        return VX_E_SOCKET_EINVAL;
    if (const ENUM_VX_E_SOCKET started = init(); started != VX_E_SOCKET_OK)
        return started;

    SelectSet sets[SETS] = {
        {read, readCount, VX_SOCKET_READ},
        {write, writeCount, VX_SOCKET_WRITE},
        {except, exceptCount, VX_SOCKET_EXCEPT},
    };
    for (SelectSet& set : sets)
        set.size = *set.count;
    for (SelectSet& set : sets)
        *set.count = 0;
    *ready = 0;
    for (SelectSet& set : sets) {
        if (set.size > MOST_SOCKETS)
            return VX_E_SOCKET_EMFILE;
        if (set.sockets == nullptr)
            set.size = 0;
    }

    WaitList waits;
    for (const SelectSet& set : sets) {
        for (TcpWorkerSocket2* socket : std::span(set.sockets, set.size)) {
            if (const ENUM_VX_E_SOCKET added = waits.add(socket, set.wanted); added != VX_E_SOCKET_OK)
                return added;
        }
    }
    const std::span<VXSocketWait> entries = waits.entries();
    const std::int32_t error
        = VXSocketSelect(entries.data(), static_cast<std::uint32_t>(entries.size()), timeout, ready);
    if (error != 0)
        return resultOf(error);
    if (*ready == 0)
        return VX_E_SOCKET_OK;

    *ready = 0; // the sum over the sets, as the system counts
    for (const VXSocketWait& entry : entries)
        *ready += std::popcount(static_cast<std::uint16_t>(entry.ready));
    ENUM_VX_E_SOCKET result = VX_E_SOCKET_OK;
    for (SelectSet& set : sets)
        result = keepReady(set, waits, result);
    return result;
}

ENUM_VX_E_SOCKET TcpWorkerSocket2::shutDown(Direction direction)
{
    const int how = beginShutdown(direction);
    if (how < 0 || getClosed() != 0)
        return VX_E_SOCKET_OK;
    const ENUM_VX_E_SOCKET result = resultOf(VXSocketShutdown(m_handle, how));
    return result == VX_E_SOCKET_ENOTCONN ? VX_E_SOCKET_OK : result;
}

} // namespace vx::net
