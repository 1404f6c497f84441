#include "vxsys/Module.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Utf.h"
#include "vxsys/linux/ProcPaths.h"
#include "vxsys/posix/LibraryFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>
#include <string_view>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr std::size_t NAME_SIZE = 4096;

/// A name without a separator, for the system's loader.
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
    // "C:name.so" is a path here. The loader would search its folders for a name without a "/".
    char relative[NAME_SIZE + 2];
    const char* native = isAPath ? path.get() : plain;
    if (isAPath && std::strchr(native, '/') == nullptr) {
        std::strcpy(relative, "./");
        std::strcpy(relative + 2, native);
        native = relative;
    }

    if (isAPath)
        return openLibraryFile(native, handle);
    return loadLibrary(native, handle) ? RESULT_OK : RESULT_MODULE_NOT_FOUND;
}

std::int32_t VXModuleLibClose(const void*, VXLibHandle handle) noexcept
{
    if (handle == VX_LIB_INVALID_HANDLE || handle == 0)
        return RESULT_INVALID_HANDLE;
    return ::dlclose(reinterpret_cast<void*>(handle)) == 0 ? RESULT_OK : RESULT_INVALID_HANDLE;
}

std::int32_t VXModuleGetFileName(const void* module, char16_t* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    *name = 0;
    const char* file = PROGRAM_PATH;
    Dl_info info;
    if (module != nullptr) {
        struct link_map* map = nullptr;
        if (::dladdr1(module, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0)
            return RESULT_NOT_FOUND;
        if (*map->l_name != '\0') // empty for the program
            file = map->l_name;
    }
    char real[PATH_MAX];
    if (::realpath(file, real) == nullptr)
        return VXResultFromNative(errno);
    const Conversion done = utf8ToUtf16(real, name, static_cast<std::size_t>(size) - 1);
    name[done.outcome == Outcome::done ? done.written : 0] = 0;
    if (done.outcome == Outcome::badText)
        return RESULT_INVALID_NAME;
    return done.outcome == Outcome::done ? RESULT_OK : RESULT_BUFFER_TOO_SMALL;
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
    // The address of a symbol may be null. Only the error text of the loader says that there is no such symbol.
    ::dlerror();
    void* const address = ::dlsym(reinterpret_cast<void*>(handle), plain);
    if (address == nullptr && ::dlerror() != nullptr)
        return RESULT_SYMBOL_NOT_FOUND;
    *symbol = address;
    return RESULT_OK;
}
