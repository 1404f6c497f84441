#include "vxsys/File.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/posix/FileStatus.h"
#include "vxsys/posix/ReplaceFile.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr std::uint32_t KNOWN_FLAGS = VX_FILE_READ | VX_FILE_WRITE | VX_FILE_CREATE | VX_FILE_TRUNCATE | VX_FILE_AT_END;
constexpr int PERMISSIONS = 0777;

/// The descriptor, or -1, which every call answers with EBADF.
int descriptorOf(std::uint32_t handle) noexcept
{
    return handle <= INT_MAX ? static_cast<int>(handle) : -1;
}

/// The flags of `open`, or -1 where ours ask for nothing or contradict each other.
int openModeOf(std::uint32_t flags) noexcept
{
    const bool reads = (flags & VX_FILE_READ) != 0;
    const bool writes = (flags & VX_FILE_WRITE) != 0;
    if ((flags & ~KNOWN_FLAGS) != 0 || (!reads && !writes) || (!writes && (flags & VX_FILE_TRUNCATE) != 0))
        return -1;
    return (!writes        ? O_RDONLY
                   : reads ? O_RDWR
                           : O_WRONLY)
        | ((flags & VX_FILE_CREATE) != 0 ? O_CREAT : 0) | ((flags & VX_FILE_TRUNCATE) != 0 ? O_TRUNC : 0) | O_CLOEXEC
        | O_NOCTTY;
}

/// Moves by nothing from `origin` and tells where that is; -1 for what has no position, a pipe or a terminal.
std::int32_t seek(int descriptor, int origin, std::int64_t* position) noexcept
{
    *position = ::lseek(descriptor, 0, origin);
    return *position == -1 && errno != ESPIPE ? VXResultFromNative(errno) : RESULT_OK;
}

std::int32_t prepare(int descriptor, std::uint32_t flags) noexcept
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return VXResultFromNative(errno);
    if (S_ISDIR(status.st_mode))
        return RESULT_ACCESS_DENIED;
    std::int64_t position = 0;
    return (flags & VX_FILE_AT_END) != 0 ? seek(descriptor, SEEK_END, &position) : RESULT_OK;
}

/// Keeps SIGPIPE from the calling thread to the end of the block. One that came up meanwhile was ours and is dropped; one
/// that had been waiting before is somebody else's and goes on waiting.
class [[nodiscard]] PipeSignalShield {
public:
    PipeSignalShield() noexcept
    {
        sigset_t waiting;
        sigemptyset(&m_signal);
        sigaddset(&m_signal, SIGPIPE);
        sigpending(&waiting);
        m_wasWaiting = sigismember(&waiting, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &m_signal, &m_maskBefore);
    }
    ~PipeSignalShield()
    {
        if (!m_wasWaiting) {
            constexpr timespec AT_ONCE {};
            retryOnSignal([&] { return ::sigtimedwait(&m_signal, nullptr, &AT_ONCE); });
        }
        pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }
    PipeSignalShield(const PipeSignalShield&) = delete;
    PipeSignalShield& operator=(const PipeSignalShield&) = delete;

private:
    sigset_t m_signal;
    sigset_t m_maskBefore;
    bool m_wasWaiting;
};

/// `write` that never raises SIGPIPE, whatever stands behind the descriptor. `*error` is the native error after -1.
ssize_t writeWithoutSignal(int descriptor, const void* source, std::size_t length, int* error) noexcept
{
    struct stat status;
    ssize_t written = ::fstat(descriptor, &status);
    if (written == 0) {
        const auto write = [&] { return ::write(descriptor, source, length); };
        if (S_ISREG(status.st_mode)) {
            written = retryOnSignal(write);
        } else if (S_ISSOCK(status.st_mode)) {
            written = retryOnSignal([&] { return ::send(descriptor, source, length, MSG_NOSIGNAL); });
        } else {
            const PipeSignalShield shield;
            written = retryOnSignal(write);
            *error = errno;
            return written;
        }
    }
    *error = errno;
    return written;
}

/// A write by `put(error)`, which gives the bytes written, or -1 and the native error.
template <class Put>
std::int32_t writeBy(Put put, const void* source, std::int32_t length, std::int32_t* done) noexcept
{
    if (done == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *done = 0;
    if (length < 0 || (source == nullptr && length != 0))
        return RESULT_INVALID_ARGUMENT;

    int error = 0;
    const ssize_t written = put(&error);
    if (written == -1)
        return VXResultFromNative(error);
    *done = static_cast<std::int32_t>(written);
    return RESULT_OK;
}

} // namespace

std::int32_t VXFileOpen(const char16_t* path, std::uint32_t flags, std::int32_t access, std::uint32_t* handle) noexcept
{
    if (handle == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *handle = VX_FILE_INVALID_HANDLE;
    const int mode = openModeOf(flags);
    if (mode == -1)
        return RESULT_INVALID_ARGUMENT;
    NativePath native;
    std::int32_t result = native.assign(path);
    if (failed(result))
        return result;

    const int descriptor = retryOnSignal([&] { return ::open(native.get(), mode, access & PERMISSIONS); });
    if (descriptor == -1)
        return VXResultFromNative(errno);
    result = prepare(descriptor, flags);
    if (failed(result)) {
        ::close(descriptor);
        return result;
    }
    *handle = static_cast<std::uint32_t>(descriptor);
    return RESULT_OK;
}

std::int32_t VXFileClose(std::uint32_t handle) noexcept
{
    if (::close(descriptorOf(handle)) != 0 && errno != EINTR)
        return VXResultFromNative(errno);
    return RESULT_OK;
}

std::int32_t VXFileGetSize(std::uint32_t handle, std::int64_t* size) noexcept
{
    if (size == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *size = 0;
    struct stat status;
    if (::fstat(descriptorOf(handle), &status) != 0)
        return VXResultFromNative(errno);
    *size = status.st_size;
    return RESULT_OK;
}

std::int32_t VXFileRead(std::uint32_t handle, void* target, std::int32_t length, std::int32_t* done) noexcept
{
    if (done == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *done = 0;
    if (length < 0 || (target == nullptr && length != 0))
        return RESULT_INVALID_ARGUMENT;

    const ssize_t got
        = retryOnSignal([&] { return ::read(descriptorOf(handle), target, static_cast<std::size_t>(length)); });
    if (got == -1)
        return VXResultFromNative(errno);
    *done = static_cast<std::int32_t>(got);
    return RESULT_OK;
}

std::int32_t VXFileWrite(std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept
{
    return writeBy(
        [&](int* error) {
            return writeWithoutSignal(descriptorOf(handle), source, static_cast<std::size_t>(length), error);
        },
        source, length, done);
}

std::int32_t VXFileIsRegular(std::uint32_t handle) noexcept
{
    struct stat status;
    if (::fstat(descriptorOf(handle), &status) != 0)
        return VXResultFromNative(errno);
    return S_ISREG(status.st_mode) ? RESULT_OK : RESULT_FALSE;
}

std::int32_t VXFileWriteRegular(
    std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept
{
    return writeBy(
        [&](int* error) {
            const ssize_t written = retryOnSignal(
                [&] { return ::write(descriptorOf(handle), source, static_cast<std::size_t>(length)); });
            if (written == -1)
                *error = errno;
            return written;
        },
        source, length, done);
}

std::int32_t VXFileSeekToEnd(std::uint32_t handle, std::int64_t* position) noexcept
{
    return position != nullptr ? seek(descriptorOf(handle), SEEK_END, position) : RESULT_INVALID_ARGUMENT;
}

std::int32_t VXFileGetPosition(std::uint32_t handle, std::int64_t* position) noexcept
{
    return position != nullptr ? seek(descriptorOf(handle), SEEK_CUR, position) : RESULT_INVALID_ARGUMENT;
}

std::int32_t VXFileTruncate(std::uint32_t handle, std::int64_t size) noexcept
{
    if (size < 0)
        return RESULT_INVALID_ARGUMENT;
    if (retryOnSignal([&] { return ::ftruncate(descriptorOf(handle), size); }) != 0)
        return VXResultFromNative(errno);
    return RESULT_OK;
}

std::int32_t VXFileFlush(std::uint32_t handle) noexcept
{
    // EINVAL and EROFS say that there is no disk behind the descriptor, not that the disk failed.
    if (retryOnSignal([&] { return ::fdatasync(descriptorOf(handle)); }) != 0 && errno != EINVAL && errno != EROFS)
        return VXResultFromNative(errno);
    return RESULT_OK;
}

std::int32_t VXFileGetIdentity(std::uint32_t handle, VXFileIdentity* identity) noexcept
{
    if (identity == nullptr)
        return RESULT_INVALID_ARGUMENT;
    VXFileStatus status;
    const int error = readStatus(descriptorOf(handle), "", AT_EMPTY_PATH, status);
    *identity = status.identity;
    return VXResultFromNative(error);
}

std::int32_t VXFileGetStatus(const char16_t* path, VXFileStatus* status) noexcept
{
    if (status == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *status = {};
    NativePath native;
    const std::int32_t result = native.assign(path);
    return failed(result) ? result : VXResultFromNative(readStatus(AT_FDCWD, native.get(), 0, *status));
}

std::int32_t VXFileReplace(
    const char16_t* path, const void* content, std::int64_t length, std::int32_t access, VXFileStatus* status) noexcept
{
    if (status != nullptr)
        *status = {};
    if (length < 0 || (content == nullptr && length != 0))
        return RESULT_INVALID_ARGUMENT;
    NativePath native;
    const std::int32_t result = native.assign(path);
    if (failed(result))
        return result;
    return replaceFile(
        native.get(), content, static_cast<std::size_t>(length), static_cast<mode_t>(access & PERMISSIONS), status);
}

std::uint32_t VXFileFromStream(std::FILE* stream) noexcept
{
    const int descriptor = stream != nullptr ? ::fileno(stream) : -1;
    return descriptor >= 0 ? static_cast<std::uint32_t>(descriptor) : VX_FILE_INVALID_HANDLE;
}
