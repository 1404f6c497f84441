#include "vxsys/Poller.h"

#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/PollerCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

using namespace vxsys::detail;

struct VXPollerTag {
    Descriptor epoll;
    Descriptor wake; ///< in the set with `VX_POLL_NO_ID`
};

namespace {

static_assert(
    EPOLLIN == POLLIN && EPOLLOUT == POLLOUT && EPOLLPRI == POLLPRI && EPOLLERR == POLLERR && EPOLLHUP == POLLHUP);

int control(VXPollerTag& poller, int operation, int descriptor, std::uint32_t interest, std::uint64_t id) noexcept
{
    epoll_event event {};
    event.data.u64 = id;
    event.events = static_cast<std::uint32_t>(nativeOf(interest));
    return ::epoll_ctl(poller.epoll.get(), operation, descriptor, &event) == 0 ? 0 : errno;
}

int open(VXPollerTag& poller) noexcept
{
    poller.epoll.reset(::epoll_create1(EPOLL_CLOEXEC));
    if (!poller.epoll.isOpen())
        return errno;
    poller.wake.reset(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!poller.wake.isOpen())
        return errno;
    return control(poller, EPOLL_CTL_ADD, poller.wake.get(), VX_POLL_READ, VX_POLL_NO_ID);
}

std::int32_t set(VXPollerHandle poller, int operation, std::uint32_t socket, std::uint32_t interest, std::uint64_t id)
{
    if (poller == nullptr || !isInterest(interest, id))
        return pollerError(EINVAL);
    return pollerError(control(*poller, operation, static_cast<int>(socket), interest, id));
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
    return set(poller, EPOLL_CTL_ADD, socket, interest, id);
}

std::int32_t VXPollerChange(
    VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept
{
    return set(poller, EPOLL_CTL_MOD, socket, interest, id);
}

std::int32_t VXPollerRemove(VXPollerHandle poller, std::uint32_t socket) noexcept
{
    return set(poller, EPOLL_CTL_DEL, socket, 0, 0);
}

std::int32_t VXPollerWait(VXPollerHandle poller, VXPollerEvent* events, std::int32_t size, std::uint32_t milliseconds,
    std::int32_t* count) noexcept
{
    if (!isWait(poller, events, size, count))
        return pollerError(EINVAL);
    std::array<epoll_event, 256> natives;
    const int most = std::min(size, static_cast<std::int32_t>(natives.size()));
    const int found = ::epoll_wait(poller->epoll.get(), natives.data(), most, pollTime(milliseconds));
    if (found < 0)
        return pollerError(errno);
    for (int index = 0; index < found; ++index) {
        const epoll_event& native = natives[static_cast<std::size_t>(index)];
        if (native.data.u64 != VX_POLL_NO_ID) {
            events[(*count)++] = {native.data.u64, readyOf(native.events)};
        } else {
            std::uint64_t wakes;
            static_cast<void>(::read(poller->wake.get(), &wakes, sizeof wakes) == sizeof wakes);
        }
    }
    return 0;
}

std::int32_t VXPollerWake(VXPollerHandle poller) noexcept
{
    if (poller == nullptr)
        return pollerError(EINVAL);
    return wakeBy(poller->wake.get(), std::uint64_t {1});
}
