#include "vxsys/Module.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Utf.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr std::size_t NAME_SIZE = 4096;

/// A name that is no path, for the system's loader.
std::int32_t narrowName(std::u16string_view name, char (&target)[NAME_SIZE]) noexcept
{
    if (name.empty())
        return RESULT_INVALID_ARGUMENT;
    const Conversion done = utf16ToUtf8(name, target, NAME_SIZE - 1);
    if (done.outcome != Outcome::done)
        return done.outcome == Outcome::badText ? RESULT_INVALID_NAME : RESULT_NAME_TOO_LONG;
    target[done.written] = '\0';
    return RESULT_OK;
}

bool isPath(std::u16string_view name) noexcept
{
    return name.find_first_of(u"\\/:") != name.npos;
}

/// Why the loader refused the file at `path`: it gives a text only.
std::int32_t whyRefused(const char* path) noexcept
{
    const int file = retryOnSignal([&] { return ::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY); });
    if (file == -1)
        return VXResultFromNative(errno);
    Elf64_Ehdr header {};
    const ssize_t got = retryOnSignal([&] { return ::read(file, &header, sizeof header); });
    ::close(file);
#if defined(__x86_64__)
    constexpr auto MACHINE = EM_X86_64;
#elif defined(__aarch64__)
    constexpr auto MACHINE = EM_AARCH64;
#endif
    const bool isLibrary = got == static_cast<ssize_t>(sizeof header)
        && std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_type == ET_DYN
        && header.e_ident[EI_CLASS] == (sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32)
#if defined(__x86_64__) || defined(__aarch64__)
        && header.e_machine == MACHINE
#endif
        ;
    return isLibrary ? RESULT_MODULE_NOT_FOUND : RESULT_BAD_MODULE;
}

} // namespace

std::int32_t VXModuleLibOpen(const void*, const char16_t* name, VXLibHandle* handle) noexcept
{
    if (handle == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *handle = VX_LIB_INVALID_HANDLE;
    if (name == nullptr)
        return RESULT_INVALID_ARGUMENT;

    NativePath path;
    char plain[NAME_SIZE];
    const bool isAPath = isPath(name);
    const std::int32_t result = isAPath ? path.assign(name) : narrowName(name, plain);
    if (failed(result))
        return result;
    // "C:name.so" is a path to us; the loader takes a name without a "/" for one that it may look for.
    char relative[NAME_SIZE + 2];
    const char* native = isAPath ? path.get() : plain;
    if (isAPath && std::strchr(native, '/') == nullptr) {
        std::memcpy(relative, "./", 2);
        std::strcpy(relative + 2, native);
        native = relative;
    }

    void* library = ::dlopen(native, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        return isAPath ? whyRefused(native) : RESULT_MODULE_NOT_FOUND;
    *handle = reinterpret_cast<VXLibHandle>(library);
    return RESULT_OK;
}

std::int32_t VXModuleLibClose(const void*, VXLibHandle handle) noexcept
{
    if (handle == VX_LIB_INVALID_HANDLE || handle == 0)
        return RESULT_INVALID_HANDLE;
    return ::dlclose(reinterpret_cast<void*>(handle)) == 0 ? RESULT_OK : RESULT_INVALID_HANDLE;
}

std::int32_t VXLibGetSymbol(VXLibHandle handle, const char16_t* name, void** symbol) noexcept
{
    if (symbol == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *symbol = nullptr;
    if (name == nullptr)
        return RESULT_INVALID_ARGUMENT;
    if (handle == VX_LIB_INVALID_HANDLE || handle == 0)
        return RESULT_INVALID_HANDLE;
    char plain[NAME_SIZE];
    const std::int32_t result = narrowName(name, plain);
    if (failed(result))
        return result;
    // A symbol's address can be null; only the loader's text tells that from a symbol that is not there.
    ::dlerror();
    void* const address = ::dlsym(reinterpret_cast<void*>(handle), plain);
    if (address == nullptr && ::dlerror() != nullptr)
        return RESULT_SYMBOL_NOT_FOUND;
    *symbol = address;
    return RESULT_OK;
}
