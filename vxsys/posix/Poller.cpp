#include "vxsys/Poller.h"

#include "vxsys/Memory.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/PollerCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <unistd.h>
#include <vector>

using namespace vxsys::detail;

struct VXPollerTag {
    std::vector<pollfd, vxsys::Allocator<pollfd>> entries; ///< the first entry is that of the pipe
    std::vector<std::uint64_t, vxsys::Allocator<std::uint64_t>> ids; ///< of the entries
    std::size_t next = 1; ///< the entry at which the next wait begins, so that no socket is always last
    Descriptor wakeReader;
    Descriptor wakeWriter;
};

namespace {

/// Adds an entry. A failure changes nothing.
int append(VXPollerTag& poller, int descriptor, std::uint32_t interest, std::uint64_t id) noexcept
{
    try {
        if (poller.entries.size() == poller.entries.capacity())
            poller.entries.reserve(2 * poller.entries.size() + 8);
        poller.ids.push_back(id);
        poller.entries.push_back({descriptor, nativeOf(interest), 0});
        return 0;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

int open(VXPollerTag& poller) noexcept
{
    int ends[2];
    if (::pipe(ends) != 0)
        return errno;
    poller.wakeReader.reset(ends[0]);
    poller.wakeWriter.reset(ends[1]);
    for (const int end : ends) {
        if (::fcntl(end, F_SETFD, FD_CLOEXEC) != 0 || ::fcntl(end, F_SETFL, O_NONBLOCK) != 0)
            return errno;
    }
    return append(poller, ends[0], VX_POLL_READ, VX_POLL_NO_ID);
}

/// The index of a socket's entry; 0 for none.
std::size_t find(const VXPollerTag& poller, std::uint32_t socket) noexcept
{
    const auto found = std::find_if(poller.entries.begin() + 1, poller.entries.end(),
        [&](const pollfd& entry) { return entry.fd == static_cast<int>(socket); });
    return found != poller.entries.end() ? static_cast<std::size_t>(found - poller.entries.begin()) : 0;
}

} // namespace

std::int32_t VXPollerCreate(VXPollerHandle* poller) noexcept
{
    return createPoller(poller, open);
}

void VXPollerDestroy(VXPollerHandle poller) noexcept
{
    delete poller;
}

std::int32_t VXPollerAdd(VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept
{
    if (poller == nullptr || !isInterest(interest, id) || find(*poller, socket) != 0)
        return pollerError(EINVAL);
    if (::fcntl(static_cast<int>(socket), F_GETFD) == -1)
        return pollerError(errno);
    return pollerError(append(*poller, static_cast<int>(socket), interest, id));
}

std::int32_t VXPollerChange(
    VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept
{
    const std::size_t index = poller != nullptr ? find(*poller, socket) : 0;
    if (index == 0 || !isInterest(interest, id))
        return pollerError(EINVAL);
    poller->entries[index].events = nativeOf(interest);
    poller->ids[index] = id;
    return 0;
}

std::int32_t VXPollerRemove(VXPollerHandle poller, std::uint32_t socket) noexcept
{
    const std::size_t index = poller != nullptr ? find(*poller, socket) : 0;
    if (index == 0)
        return pollerError(EINVAL);
    poller->entries[index] = poller->entries.back();
    poller->ids[index] = poller->ids.back();
    poller->entries.pop_back();
    poller->ids.pop_back();
    return 0;
}

std::int32_t VXPollerWait(VXPollerHandle poller, VXPollerEvent* events, std::int32_t size, std::uint32_t milliseconds,
    std::int32_t* count) noexcept
{
    if (!isWait(poller, events, size, count))
        return pollerError(EINVAL);
    auto& entries = poller->entries;
    const int found = ::poll(entries.data(), static_cast<nfds_t>(entries.size()), pollTime(milliseconds));
    if (found < 0)
        return pollerError(errno);
    if (entries[0].revents != 0) {
        for (char wakes[64]; ::read(poller->wakeReader.get(), wakes, sizeof wakes) > 0;) { }
    }
    const std::size_t sockets = entries.size() - 1;
    const std::size_t start = poller->next;
    for (std::size_t step = 0; step < sockets && *count < size; ++step) {
        const std::size_t index = 1 + (start - 1 + step) % sockets;
        if (const std::uint32_t ready = readyOf(static_cast<std::uint32_t>(entries[index].revents)); ready != 0) {
            events[(*count)++] = {poller->ids[index], ready};
            poller->next = index + 1;
        }
    }
    return 0;
}

std::int32_t VXPollerWake(VXPollerHandle poller) noexcept
{
    if (poller == nullptr)
        return pollerError(EINVAL);
    return wakeBy(poller->wakeWriter.get(), 'w');
}
