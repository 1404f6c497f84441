#include "vxsys/Console.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/StateLock.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <termios.h>
#include <unistd.h>

namespace {

using namespace vxsys::detail;
using namespace vxsys::results;

/// Signals that end a process without a handler for them.
constexpr int DEADLY_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM};

constinit StateLock g_lock;
int g_depth VX_GUARDED_BY(g_lock) = 0;
bool g_isTerminal VX_GUARDED_BY(g_lock) = false;
termios g_saved {}; // read by a signal handler, which cannot wait for a lock

extern "C" void putBackAndDie(int signal)
{
    const int error = errno;
    ::tcsetattr(STDIN_FILENO, TCSANOW, &g_saved);
    // The system removes this handler when it calls it, so the signal that is raised here ends the process when the
    // handler returns.
    ::raise(signal);
    errno = error;
}

bool isHandledBy(int signal, void (*handler)(int))
{
    struct sigaction current { };
    return ::sigaction(signal, nullptr, &current) == 0 && (current.sa_flags & SA_SIGINFO) == 0
        && current.sa_handler == handler;
}

/// Does not touch signals that the program handles or ignores.
void replaceHandlers(void (*from)(int), void (*to)(int))
{
    struct sigaction action { };
    action.sa_handler = to;
    action.sa_flags = to == SIG_DFL ? 0 : SA_RESETHAND;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : DEADLY_SIGNALS) {
        if (isHandledBy(signal, from))
            ::sigaction(signal, &action, nullptr);
    }
}

int setTerminal(const termios& settings)
{
    // Not TCSAFLUSH, which drops keys that were typed before.
    return retryOnSignal([&] { return ::tcsetattr(STDIN_FILENO, TCSADRAIN, &settings); });
}

/// Removes the next byte from the buffer of the C library for standard input; false if it is empty. It never lets the C
/// library read more: the rest of the input is read through the descriptor.
bool takeReadAhead(unsigned char* byte)
{
    ::flockfile(stdin);
    const bool isThere = stdin->_IO_read_ptr < stdin->_IO_read_end; // there is no function for it
    if (isThere)
        *byte = static_cast<unsigned char>(::getc_unlocked(stdin));
    ::funlockfile(stdin);
    return isThere;
}

bool isEraseKey(unsigned char key)
{
    const StateGuard guard(g_lock);
    return g_depth > 0 && g_isTerminal && g_saved.c_cc[VERASE] != _POSIX_VDISABLE && key == g_saved.c_cc[VERASE];
}

} // namespace

extern "C" {

std::int32_t VXConsoleBeginKeys() noexcept
{
    const StateGuard guard(g_lock);
    if (g_depth > 0) {
        ++g_depth;
        return 0;
    }

    g_isTerminal = ::isatty(STDIN_FILENO) == 1;
    if (g_isTerminal) {
        if (::tcgetattr(STDIN_FILENO, &g_saved) < 0)
            return VXResultFromNative(errno);

        termios keys = g_saved;
        keys.c_iflag &= ~static_cast<tcflag_t>(ISTRIP | INLCR | IGNCR | ICRNL | IXON);
        keys.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL | ICANON | ISIG | IEXTEN);
        keys.c_cc[VMIN] = 1;
        keys.c_cc[VTIME] = 0;
        replaceHandlers(SIG_DFL, putBackAndDie);
        if (setTerminal(keys) < 0) {
            const int error = errno;
            replaceHandlers(putBackAndDie, SIG_DFL);
            return VXResultFromNative(error);
        }
    }
    g_depth = 1;
    return 0;
}

std::int32_t VXConsoleEndKeys() noexcept
{
    const StateGuard guard(g_lock);
    if (g_depth == 0)
        return RESULT_FAIL;
    if (--g_depth > 0 || !g_isTerminal)
        return 0;

    const int result = setTerminal(g_saved);
    const int error = errno;
    replaceHandlers(putBackAndDie, SIG_DFL);
    return result < 0 ? VXResultFromNative(error) : 0;
}

std::int32_t VXConsoleReadKey(std::int32_t* key) noexcept
{
    if (key == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *key = 0;
    unsigned char byte = 0;
    const ssize_t got = takeReadAhead(&byte) ? 1 : retryOnSignal([&] { return ::read(STDIN_FILENO, &byte, 1); });
    if (got < 0)
        return VXResultFromNative(errno);
    if (got == 0)
        return RESULT_END_OF_FILE;

    *key = isEraseKey(byte) ? 8 : byte;
    return 0;
}

std::int32_t VXConsoleIsTerminal(std::uint32_t handle) noexcept
{
    return ::isatty(static_cast<int>(handle)) == 1 ? RESULT_OK : RESULT_FALSE;
}
}
