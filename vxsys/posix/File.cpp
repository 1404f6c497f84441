#include "vxsys/File.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/SignalShield.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/linux/FileReplacement.h"
#include "vxsys/linux/FileStatus.h"
#include "vxsys/linux/ProcPaths.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <new>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr std::uint32_t KNOWN_FLAGS
    = VX_FILE_READ | VX_FILE_WRITE | VX_FILE_CREATE | VX_FILE_TRUNCATE | VX_FILE_AT_END | VX_FILE_APPEND;
constexpr int PERMISSIONS = 0777;

/// The descriptor, or -1, for which every system call fails with EBADF.
int descriptorOf(std::uint32_t handle) noexcept
{
    return handle <= INT_MAX ? static_cast<int>(handle) : -1;
}

/// The flags of `open`, or -1 if ours ask for no access or contradict each other.
int openModeOf(std::uint32_t flags) noexcept
{
    const bool reads = (flags & VX_FILE_READ) != 0;
    const bool writes = (flags & VX_FILE_WRITE) != 0;
    constexpr std::uint32_t ONLY_WITH_WRITE = VX_FILE_TRUNCATE | VX_FILE_APPEND;
    if ((flags & ~KNOWN_FLAGS) != 0 || (!reads && !writes) || (!writes && (flags & ONLY_WITH_WRITE) != 0))
        return -1;
    int mode = O_CLOEXEC | O_NOCTTY | (!writes ? O_RDONLY : reads ? O_RDWR : O_WRONLY);
    if ((flags & VX_FILE_CREATE) != 0)
        mode |= O_CREAT;
    if ((flags & VX_FILE_TRUNCATE) != 0)
        mode |= O_TRUNC;
    if ((flags & VX_FILE_APPEND) != 0)
        mode |= O_APPEND;
    return mode;
}

/// Stores the position that `origin` stands for; -1 for a pipe or a terminal, which have none.
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
        return RESULT_IS_DIRECTORY;
    std::int64_t position = 0;
    return (flags & VX_FILE_AT_END) != 0 ? seek(descriptor, SEEK_END, &position) : RESULT_OK;
}

std::int32_t openNative(const char* path, int mode, std::uint32_t flags, mode_t access, std::uint32_t* handle) noexcept
{
    const int descriptor = retryOnSignal([&] { return ::open(path, mode, access); });
    if (descriptor == -1)
        return VXResultFromNative(errno);
    if (const std::int32_t result = prepare(descriptor, flags); failed(result)) {
        ::close(descriptor);
        return result;
    }
    *handle = static_cast<std::uint32_t>(descriptor);
    return RESULT_OK;
}

/// `write` without SIGPIPE for any kind of descriptor.
ssize_t writeWithoutSignal(int descriptor, const void* source, std::size_t length) noexcept
{
    struct stat status;
    if (::fstat(descriptor, &status) != 0)
        return -1;
    if (S_ISREG(status.st_mode))
        return ::write(descriptor, source, length);
    if (S_ISSOCK(status.st_mode))
        return ::send(descriptor, source, length, MSG_NOSIGNAL);
    const SignalShield shield(SIGPIPE);
    return ::write(descriptor, source, length);
}

/// Reads or writes with one system call, which is repeated after a signal. `transfer` returns the number of bytes, or
/// -1 with `errno`.
template <class Transfer>
std::int32_t transferBy(Transfer transfer, const void* bytes, std::int32_t length, std::int32_t* done) noexcept
{
    if (done == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *done = 0;
    if (length < 0 || (bytes == nullptr && length != 0))
        return RESULT_INVALID_ARGUMENT;

    const ssize_t count = retryOnSignal(transfer);
    if (count == -1)
        return VXResultFromNative(errno);
    *done = static_cast<std::int32_t>(count);
    return RESULT_OK;
}

} // namespace

struct VXFileReplacementTag {
    FileReplacement file;
};

std::int32_t VXFileOpen(const char16_t* path, std::uint32_t flags, std::int32_t access, std::uint32_t* handle) noexcept
{
    if (handle == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *handle = VX_FILE_INVALID_HANDLE;
    const int mode = openModeOf(flags);
    if (mode == -1)
        return RESULT_INVALID_ARGUMENT;
    NativePath native;
    return inOrder([&] { return native.assign(path); },
        [&] { return openNative(native.get(), mode, flags, static_cast<mode_t>(access & PERMISSIONS), handle); });
}

std::int32_t VXFileReopen(std::uint32_t handle, std::uint32_t flags, std::uint32_t* other) noexcept
{
    if (other == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *other = VX_FILE_INVALID_HANDLE;
    const int mode = openModeOf(flags);
    if (mode == -1 || (flags & VX_FILE_CREATE) != 0)
        return RESULT_INVALID_ARGUMENT;
    if (::fcntl(descriptorOf(handle), F_GETFD) == -1)
        return VXResultFromNative(errno);
    return openNative(DescriptorPath(descriptorOf(handle)).get(), mode, flags, 0, other);
}

std::int32_t VXFileClose(std::uint32_t handle) noexcept
{
    const int error = errorOf(::close(descriptorOf(handle)));
    return error != EINTR ? VXResultFromNative(error) : RESULT_OK;
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
    return transferBy(
        [&] { return ::read(descriptorOf(handle), target, static_cast<std::size_t>(length)); }, target, length, done);
}

std::int32_t VXFileReadAt(
    std::uint32_t handle, std::int64_t position, void* target, std::int32_t length, std::int32_t* done) noexcept
{
    return transferBy([&] { return ::pread(descriptorOf(handle), target, static_cast<std::size_t>(length), position); },
        target, length, done);
}

std::int32_t VXFileWrite(std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept
{
    return transferBy(
        [&] { return writeWithoutSignal(descriptorOf(handle), source, static_cast<std::size_t>(length)); }, source,
        length, done);
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
    return transferBy(
        [&] { return ::write(descriptorOf(handle), source, static_cast<std::size_t>(length)); }, source, length, done);
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
    return VXResultFromNative(errorOf(retryOnSignal([&] { return ::ftruncate(descriptorOf(handle), size); })));
}

std::int32_t VXFileSetAccess(std::uint32_t handle, std::int32_t access) noexcept
{
    const auto mode = static_cast<mode_t>(access);
    return VXResultFromNative(errorOf(retryOnSignal([&] { return ::fchmod(descriptorOf(handle), mode); })));
}

std::int32_t VXFileFlush(std::uint32_t handle) noexcept
{
    // EINVAL and EROFS mean that the descriptor has no disk, not that a disk failed.
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
    return inOrder([&] { return native.assign(path); },
        [&] { return VXResultFromNative(readStatus(AT_FDCWD, native.get(), 0, *status)); });
}

std::int32_t VXFileReplace(
    const char16_t* path, const void* content, std::int64_t length, std::int32_t access, VXFileStatus* status) noexcept
{
    if (status != nullptr)
        *status = {};
    if (length < 0 || (content == nullptr && length != 0))
        return RESULT_INVALID_ARGUMENT;
    NativePath native;
    if (const std::int32_t result = native.assign(path); failed(result))
        return result;
    FileReplacement file;
    return VXResultFromNative(inOrder(
        [&] { return file.begin(native.get(), static_cast<mode_t>(access & PERMISSIONS)); },
        [&] { return file.write(content, static_cast<std::size_t>(length)); }, [&] { return file.commit(status); }));
}

std::int32_t VXFileReplaceBegin(
    const char16_t* path, std::int32_t access, VXFileReplacement* replacement, std::uint32_t* handle) noexcept
{
    if (replacement != nullptr)
        *replacement = nullptr;
    if (handle != nullptr)
        *handle = VX_FILE_INVALID_HANDLE;
    if (replacement == nullptr || handle == nullptr)
        return RESULT_INVALID_ARGUMENT;
    NativePath native;
    if (const std::int32_t result = native.assign(path); failed(result))
        return result;
    std::unique_ptr<VXFileReplacementTag> begun(new (std::nothrow) VXFileReplacementTag);
    if (begun == nullptr)
        return RESULT_OUT_OF_MEMORY;
    if (const int error = begun->file.begin(native.get(), static_cast<mode_t>(access & PERMISSIONS)))
        return VXResultFromNative(error);
    *handle = static_cast<std::uint32_t>(begun->file.descriptor());
    *replacement = begun.release();
    return RESULT_OK;
}

std::int32_t VXFileReplaceCommit(VXFileReplacement replacement, VXFileStatus* status) noexcept
{
    if (status != nullptr)
        *status = {};
    return replacement != nullptr ? VXResultFromNative(replacement->file.commit(status)) : RESULT_INVALID_ARGUMENT;
}

std::int32_t VXFileReplaceEnd(VXFileReplacement replacement) noexcept
{
    delete replacement;
    return replacement != nullptr ? RESULT_OK : RESULT_INVALID_ARGUMENT;
}

void VXFileReplaceDiscard(VXFileReplacement replacement) noexcept
{
    if (replacement != nullptr)
        replacement->file.discard();
}

std::uint32_t VXFileFromStream(std::FILE* stream) noexcept
{
    const int descriptor = stream != nullptr ? ::fileno(stream) : -1;
    return descriptor >= 0 ? static_cast<std::uint32_t>(descriptor) : VX_FILE_INVALID_HANDLE;
}
