// Functions of the C library that this program defines itself, so that the libraries find these first. Each passes a
// call on or lets it fail. They have at most six integers or pointers as parameters, which are passed in registers
// whatever their types are, so the real types are not needed. Under a sanitizer the real function is that of the
// sanitizer.
#include "SystemCalls.h"

#include <errno.h>
#include <stdatomic.h>
#include <stddef.h>

void* dlsym(void* library, const char* name);

#define NEXT_LIBRARY ((void*)-1) // RTLD_NEXT
enum { PIDFD_OPEN = 434, COPY_DESCRIPTOR = 1030, GET_FLAGS = 1 }; // SYS_pidfd_open, F_DUPFD_CLOEXEC, F_GETFD

static atomic_int g_call, g_left, g_error, g_isShort, g_stays;

void setFault(enum SystemCall call, int first, int error, int isShort, int stays)
{
    g_call = CALL_NONE;
    g_left = first;
    g_error = error;
    g_isShort = isShort;
    g_stays = stays;
    g_call = call;
}

int hasFailed(void)
{
    return g_left <= 0;
}

/// The length that a call may transfer, or -1 with `errno` if it fails.
static long allowed(enum SystemCall call, long length)
{
    if (g_call != (int)call)
        return length;
    const int left = atomic_fetch_sub(&g_left, 1) - 1;
    if (left > 0 || (left < 0 && !g_stays))
        return length;
    if (left == 0 && g_isShort)
        return (length + 1) / 2;
    errno = g_error;
    return -1;
}

static int fails(enum SystemCall call)
{
    return allowed(call, 0) < 0;
}

typedef long Function(long, long, long, long, long, long, long);

/// Declares `real_name`, which returns the function that `name` hides.
#define REAL(name)                                                                                                     \
    Function __interceptor_##name __attribute__((weak));                                                               \
    static Function* real_##name(void)                                                                                 \
    {                                                                                                                  \
        static Function* _Atomic s_found;                                                                              \
        Function* found = s_found;                                                                                     \
        if (found == NULL) {                                                                                           \
            found = __interceptor_##name;                                                                              \
            if (found == NULL)                                                                                         \
                *(void**)&found = dlsym(NEXT_LIBRARY, #name);                                                          \
            s_found = found;                                                                                           \
        }                                                                                                              \
        return found;                                                                                                  \
    }
#define HIDE(name, work)                                                                                               \
    REAL(name)                                                                                                         \
    long name(long a, long b, long c, long d, long e, long f, long g) work
#define PASS(name) real_##name()(a, b, c, d, e, f, g)

/// Hides a function that returns `failure` if it fails.
#define FAIL(call, failure, name) HIDE(name, { return fails(call) ? (failure) : PASS(name); })
/// The same for several functions.
#define FAIL3(call, failure, x, y, z) FAIL(call, failure, x) FAIL(call, failure, y) FAIL(call, failure, z)
#define FAIL4(call, failure, x, y, z, last) FAIL3(call, failure, x, y, z) FAIL(call, failure, last)
/// Hides a function whose third argument is a length.
#define MOVE(call, name) HIDE(name, { return (c = allowed(call, c)) < 0 ? -1 : PASS(name); })

#pragma GCC visibility push(default)

FAIL3(CALL_OPEN, -1, open, openat, accept4)
FAIL3(CALL_MAKE, -1, pipe2, eventfd, socket)
FAIL(CALL_MAKE, 0, fdopendir)
MOVE(CALL_READ, read)
MOVE(CALL_READ, pread)
MOVE(CALL_READ, recv)
MOVE(CALL_WRITE, write)
MOVE(CALL_WRITE, send)
FAIL4(CALL_NAME, -1, mkdir, mkdirat, rename, renameat)
FAIL3(CALL_NAME, -1, link, linkat, unlinkat)
FAIL(CALL_SIZE, -1, ftruncate)
FAIL(CALL_SIZE, errno, posix_fallocate)
FAIL4(CALL_STATUS, -1, stat, fstat, fstatat, statx)
FAIL4(CALL_STATUS, -1, chmod, fchmod, fchown, fgetxattr)
FAIL3(CALL_STATUS, -1, readlink, readlinkat, lseek)
FAIL3(CALL_STATUS, 0, realpath, getcwd, readdir)
FAIL(CALL_LOCK, -1, flock)
FAIL(CALL_MAP, -1, mmap)
FAIL3(CALL_START, errno, pthread_create, posix_spawn, posix_spawn_file_actions_adddup2)
FAIL4(CALL_SOCKET_SETUP, -1, bind, listen, getsockname, getsockopt)
FAIL(CALL_SOCKET_SETUP, -1, setsockopt)
FAIL(CALL_SOCKET_SETUP, -10, getaddrinfo) // EAI_MEMORY
FAIL(CALL_SOCKET, -1, poll)
FAIL(CALL_LOAD, 0, dlopen)

HIDE(fcntl, { return fails(b == COPY_DESCRIPTOR ? CALL_MAKE : CALL_LOCK) ? -1 : PASS(fcntl); })
HIDE(syscall, { return a == PIDFD_OPEN && fails(CALL_MAKE) ? -1 : PASS(syscall); })

// Does not wait for the disk, which would take most of the time.
long fsync(long file)
{
    return fails(CALL_FLUSH) || (int)real_fcntl()(file, GET_FLAGS, 0, 0, 0, 0, 0) < 0 ? -1 : 0;
}
long fdatasync(long file)
{
    return fsync(file);
}

// These do their work even if a signal interrupts them.
HIDE(close, {
    const long result = PASS(close);
    return fails(CALL_CLOSE) ? -1 : result;
})
HIDE(connect, {
    if (!fails(CALL_SOCKET))
        return PASS(connect);
    if (errno == EINTR) {
        PASS(connect);
        errno = EINTR;
    }
    return -1;
})
