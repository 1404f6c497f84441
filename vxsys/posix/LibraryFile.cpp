#include "vxsys/posix/LibraryFile.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/posix/Ownership.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

using namespace vxsys::results;

bool isForThisMachine(const ElfW(Ehdr) & header) noexcept
{
#if defined(__x86_64__)
    constexpr auto MACHINE = EM_X86_64;
#elif defined(__aarch64__)
    constexpr auto MACHINE = EM_AARCH64;
#endif
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0
        && header.e_ident[EI_CLASS] == (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32) && header.e_type == ET_DYN
        && header.e_phentsize == sizeof(ElfW(Phdr))
#if defined(__x86_64__) || defined(__aarch64__)
        && header.e_machine == MACHINE
#endif
        ;
}

/// Whether the file is a complete library for this machine. The loader does not check this: with a truncated file the
/// process would crash.
std::int32_t checkImage(const char* path) noexcept
{
    const Descriptor file(retryOnSignal([&] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
    struct stat status;
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
        return VXResultFromNative(errno);
    const auto size = static_cast<std::uint64_t>(status.st_size);
    const auto readAt = [&](std::uint64_t position, void* target, std::size_t length) {
        for (auto* rest = static_cast<char*>(target); length > 0;) {
            const ssize_t got = retryOnSignal(
                [&] { return position <= size ? ::pread(file.get(), rest, length, static_cast<off_t>(position)) : 0; });
            if (got <= 0)
                return false;
            rest += got;
            length -= static_cast<std::size_t>(got);
            position += static_cast<std::uint64_t>(got);
        }
        return true;
    };
    ElfW(Ehdr) header;
    if (!S_ISREG(status.st_mode) || !readAt(0, &header, sizeof header) || !isForThisMachine(header))
        return RESULT_BAD_MODULE;
    for (std::size_t i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment;
        if (!readAt(header.e_phoff + i * sizeof segment, &segment, sizeof segment))
            return RESULT_BAD_MODULE;
        if (segment.p_type == PT_LOAD && (segment.p_offset > size || segment.p_filesz > size - segment.p_offset))
            return RESULT_BAD_MODULE;
    }
    return RESULT_OK;
}

/// Whether only the user and root can change which files a path finds: checks the folders of `path`, "/" included.
std::int32_t checkFolders(const char* path) noexcept
{
    char folder[NATIVE_PATH_SIZE];
    for (const char* end = path; end != nullptr; end = std::strchr(end + 1, '/')) {
        const auto length = end == path ? 1 : static_cast<std::size_t>(end - path);
        std::memcpy(folder, path, length);
        folder[length] = '\0';
        struct stat status;
        if (::stat(folder, &status) != 0)
            return VXResultFromNative(errno);
        if ((status.st_mode & S_ISVTX) != 0)
            status.st_mode &= ~mode_t {S_IWGRP | S_IWOTH};
        if (!isOnlyOurs(status))
            return RESULT_ACCESS_DENIED;
    }
    return RESULT_OK;
}

std::int32_t checkFile(const char* path) noexcept
{
    struct stat status;
    if (::stat(path, &status) != 0)
        return VXResultFromNative(errno);
    return isOnlyOurs(status) ? RESULT_OK : RESULT_ACCESS_DENIED;
}

} // namespace

bool loadLibrary(const char* name, VXLibHandle* handle) noexcept
{
    void* library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (library != nullptr)
        *handle = reinterpret_cast<VXLibHandle>(library);
    return library != nullptr;
}

std::int32_t openLibraryFile(const char* path, VXLibHandle* handle) noexcept
{
    if (const std::int32_t result = checkImage(path); failed(result))
        return result;
    return loadLibrary(path, handle) ? RESULT_OK : RESULT_MODULE_NOT_FOUND;
}

std::int32_t openTrustedLibrary(const char16_t* path, VXLibHandle* handle) noexcept
{
    *handle = VX_LIB_INVALID_HANDLE;
    NativePath named;
    if (const std::int32_t result = named.assign(path); failed(result))
        return result;
    if (*named.get() != '/')
        return RESULT_INVALID_NAME;
    char real[PATH_MAX];
    if (::realpath(named.get(), real) == nullptr)
        return VXResultFromNative(errno);
    for (const char* way : {named.get(), const_cast<const char*>(real)}) {
        if (const std::int32_t result = checkFolders(way); failed(result))
            return result;
    }
    const std::int32_t result = checkFile(real);
    return failed(result) ? result : openLibraryFile(real, handle);
}

} // namespace vxsys::detail
