#include "vxsys/Folder.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/FolderEntries.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/detail/Utf.h"
#include "vxsys/linux/NewName.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

/// Writes the name, zero-terminated, to `target`. Returns false for a name that cannot be part of a path.
bool widenName(std::string_view name, char16_t (&target)[NAME_MAX + 1]) noexcept
{
    const Conversion done = utf8ToUtf16(name, target, NAME_MAX);
    if (done.outcome != Outcome::done || name.find('\\') != name.npos)
        return false;
    target[done.written] = u'\0';
    return true;
}

} // namespace

std::int32_t VXFileRename(const char16_t* path, const char16_t* newPath) noexcept
{
    NativePath from, to;
    return inOrder([&] { return from.assign(path); }, [&] { return to.assign(newPath); },
        [&] { return VXResultFromNative(renameToNew(from.get(), to.get())); });
}

std::int32_t VXFileRemove(const char16_t* path) noexcept
{
    NativePath native;
    return inOrder(
        [&] { return native.assign(path); }, [&] { return VXResultFromNative(errorOf(::unlink(native.get()))); });
}

std::int32_t VXFolderList(
    const char16_t* path, std::int32_t (*take)(void* context, const char16_t* name), void* context) noexcept
{
    if (take == nullptr)
        return RESULT_INVALID_ARGUMENT;
    NativePath native;
    if (const std::int32_t result = native.assign(path); failed(result))
        return result;
    const Descriptor folder(retryOnSignal([&] { return ::open(native.get(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder.isOpen())
        return VXResultFromNative(errno);
    FolderEntries entries(folder.get());
    if (!entries.isOpen())
        return VXResultFromNative(errno);
    while (const char* const entry = entries.next()) {
        char16_t name[NAME_MAX + 1];
        const std::int32_t result = widenName(entry, name) ? take(context, name) : RESULT_OK;
        if (failed(result))
            return result;
    }
    return VXResultFromNative(errno);
}
