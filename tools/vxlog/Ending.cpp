#include "Ending.h"

#include "Texts.h"
#include "common/Failure.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace vxlog {

using namespace vxtools;

namespace {

constexpr int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGTERM};

/// Becomes readable when a signal requests the end. It wakes a wait for input that began just after the signal.
int g_wake = -1;
std::atomic<bool> g_isEnding {false};
static_assert(std::atomic<bool>::is_always_lock_free, "a handler of signals sets it");

void askForEnding(int)
{
    const int error = errno;
    g_isEnding = true;
    const std::uint64_t one = 1;
    static_cast<void>(!::write(g_wake, &one, sizeof one));
    errno = error;
}

} // namespace

void catchEndingSignals()
{
    g_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (g_wake < 0)
        throw Failure(WAITING_FOR_SIGNALS(), textOfError(errno));
    for (const int signal : ENDING_SIGNALS) {
        if (std::signal(signal, askForEnding) == SIG_IGN)
            std::signal(signal, SIG_IGN); // as set by `nohup`
    }
}

bool endingWasAskedFor() noexcept
{
    return g_isEnding;
}

int endingDescriptor() noexcept
{
    return g_wake;
}

EndingInput::EndingInput(const Input& input, std::function<void()> beforeRead)
    : m_input(input)
    , m_beforeRead(std::move(beforeRead))
{
}

std::int32_t EndingInput::read(signed char* target, std::int32_t length)
{
    if (m_beforeRead)
        m_beforeRead();
    for (;;) {
        pollfd waits[] = {{m_input.descriptor(), POLLIN, 0}, {g_wake, POLLIN, 0}};
        if (::poll(waits, std::size(waits), -1) < 0 && errno != EINTR)
            throw Failure(m_input.name(), textOfError(errno));
        if (endingWasAskedFor())
            return -1;
        if (waits[0].revents == 0)
            continue;
        const ssize_t got = ::read(m_input.descriptor(), target, static_cast<std::size_t>(length));
        if (got >= 0)
            return got > 0 ? static_cast<std::int32_t>(got) : -1;
        if (errno != EINTR && errno != EAGAIN)
            throw Failure(m_input.name(), textOfError(errno));
    }
}

} // namespace vxlog
